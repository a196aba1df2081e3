#include "app/external_calls.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

#include "engine/text.h"
#include "platform/qt/qt_paths.h"

namespace qv::app {

PluginPlaces AppPluginPlaces() {
  return {QtPaths().DataFolder()};
}

bool RunExternalFields(const Database& db, int event, std::uint32_t number, RecordValues& values) {
  return CallExternalFields(AppPluginPlaces(), event, db, static_cast<std::uint16_t>(number),
                            values);
}

namespace {

// The value as its plug-in set it, read-only, with a button that activates the plug-in.
class ExternalControl : public FieldControl {
 public:
  ExternalControl(const Database& db, int slot, QWidget* parent) : FieldControl(slot, parent) {
    box_ = new QWidget(parent);
    auto* row = new QHBoxLayout(box_);
    row->setContentsMargins(0, 0, 0, 0);
    edit_ = new QLineEdit(box_);
    edit_->setReadOnly(true);
    QPalette p = edit_->palette();
    p.setColor(QPalette::Base, p.color(QPalette::Window));
    edit_->setPalette(p);
    const QString plugin =
        QString::fromStdString(Cp1252ToUtf8(PluginName(db.definition().field(slot))));
    edit_->setPlaceholderText(plugin.isEmpty() ? tr("no plug-in chosen")
                                               : tr("set by the plug-in %1").arg(plugin));
    button_ = new QToolButton(box_);
    button_->setText("...");
    button_->setToolTip(tr("Let the plug-in %1 set this field").arg(plugin));
    button_->setEnabled(!plugin.isEmpty());
    row->addWidget(edit_, 1);
    row->addWidget(button_);
    box_->setFocusProxy(button_);
    connect(button_, &QToolButton::clicked, this, [this] { emit externalSelected(this->slot()); });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override {
    value_.assign(value.begin(), value.end());
    edit_->setText(QString::fromStdString(Cp1252ToUtf8(ValueText(value))));
  }
  std::optional<Bytes> Value() const override { return value_; }
  void SetReadOnly(bool on) override { button_->setEnabled(!on && button_->isEnabled()); }
  QString text() const override { return edit_->text(); }

 private:
  QWidget* box_;
  QLineEdit* edit_;
  QToolButton* button_;
  Bytes value_;
};

}  // namespace

FieldControl* NewExternalControl(const Database& db, int slot, QWidget* parent) {
  return new ExternalControl(db, slot, parent);
}

}  // namespace qv::app
