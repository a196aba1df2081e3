#include "app/link_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

#include "app/linked_navigation.h"

namespace qv::app {

LinkBar::LinkBar(Workspace& workspace, FileFlows& flows, QWidget* parent)
    : QWidget(parent), workspace_(workspace), flows_(flows) {
  setObjectName("linkBar");
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(8, 2, 8, 2);
  back_ = new QPushButton(style()->standardIcon(QStyle::SP_ArrowBack), tr("Back"), this);
  back_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
  back_->setToolTip(
      tr("Close this linked database and return to the one it was opened from "
         "(Alt+Left)"));
  crumbs_ = new QLabel(this);
  crumbs_->setTextFormat(Qt::RichText);
  layout->addWidget(back_);
  layout->addSpacing(8);
  layout->addWidget(crumbs_, 1);
  connect(back_, &QPushButton::clicked, this, &LinkBar::Back);
  Update();
}

void LinkBar::Update() {
  const int index = workspace_.index();
  if (index != shown_index_) {
    shown_index_ = index;
    emit stackChanged();
  }
  if (index == 0) return;
  QStringList parts;
  const auto crumbs = Breadcrumb(workspace_);
  for (std::size_t i = 0; i < crumbs.size(); ++i) {
    QString text = QString::fromStdString(crumbs[i]).toHtmlEscaped();
    parts << (i + 1 == crumbs.size() ? "<b>" + text + "</b>" : text);
  }
  crumbs_->setText(parts.join(" &nbsp;&#x203A;&nbsp; "));
}

bool LinkBar::Back() {
  if (!ReturnFromLink(workspace_, flows_)) return false;
  emit returned();
  return true;
}

}  // namespace qv::app
