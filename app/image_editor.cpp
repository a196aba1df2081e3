#include "app/image_editor.h"

#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <vector>

namespace qv::app {

ImageEditor::ImageEditor(QWidget* parent) : QWidget(parent) {
  setFixedSize(sizeHint());
  setFocusPolicy(Qt::StrongFocus);
  setToolTip(tr("Draw with the left mouse button, erase with the right one"));
}

QSize ImageEditor::sizeHint() const {
  return QSize(kWidth * kScale + 2, kHeight * kScale + 2);
}

void ImageEditor::Load(std::span<const std::uint8_t> value) {
  bits_.fill(0);
  present_ = value.size() >= 1 + kBitmapBytes && value[0] != 0;
  if (present_) std::copy_n(value.begin() + 1, kBitmapBytes, bits_.begin());
  update();
}

Bytes ImageEditor::Value() const {
  if (!present_) return Bytes{0};
  Bytes out{1};
  out.insert(out.end(), bits_.begin(), bits_.end());
  return out;
}

void ImageEditor::Clear() {
  bits_.fill(0);
  present_ = false;
  update();
  emit edited();
}

bool ImageEditor::pixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= kWidth || y >= kHeight) return false;
  int bit = y * kWidth + x;  // rows top to bottom, most significant bit first
  return (bits_[static_cast<std::size_t>(bit / 8)] & (0x80 >> (bit % 8))) != 0;
}

void ImageEditor::SetPixel(int x, int y, bool on) {
  if (x < 0 || y < 0 || x >= kWidth || y >= kHeight) return;
  int bit = y * kWidth + x;
  std::uint8_t& b = bits_[static_cast<std::size_t>(bit / 8)];
  std::uint8_t mask = static_cast<std::uint8_t>(0x80 >> (bit % 8));
  b = on ? (b | mask) : (b & ~mask);
  present_ = true;
}

void ImageEditor::SetPicture(const QImage& picture) {
  if (picture.isNull()) return;
  QImage scaled = picture.convertToFormat(QImage::Format_Grayscale8)
                      .scaled(kWidth, kHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  int left = (kWidth - scaled.width()) / 2;
  int top = (kHeight - scaled.height()) / 2;
  std::vector<float> level(static_cast<std::size_t>(kWidth * kHeight), 255.0f);
  for (int y = 0; y < scaled.height(); ++y) {
    const uchar* row = scaled.constScanLine(y);
    for (int x = 0; x < scaled.width(); ++x)
      level[static_cast<std::size_t>((y + top) * kWidth + x + left)] = row[x];
  }
  bits_.fill(0);
  auto spread = [&](int x, int y, float error) {
    if (x >= 0 && x < kWidth && y < kHeight)
      level[static_cast<std::size_t>(y * kWidth + x)] += error;
  };
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      float old = level[static_cast<std::size_t>(y * kWidth + x)];
      bool black = old < 128.0f;
      SetPixel(x, y, black);
      float error = old - (black ? 0.0f : 255.0f);
      spread(x + 1, y, error * 7 / 16);
      spread(x - 1, y + 1, error * 3 / 16);
      spread(x, y + 1, error * 5 / 16);
      spread(x + 1, y + 1, error * 1 / 16);
    }
  }
  present_ = true;
  update();
  emit edited();
}

void ImageEditor::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  painter.setPen(palette().mid().color());
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (pixel(x, y)) painter.fillRect(1 + x * kScale, 1 + y * kScale, kScale, kScale, Qt::black);
  if (hasFocus()) {
    painter.setPen(QPen(palette().highlight().color(), 1, Qt::DotLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
  }
}

void ImageEditor::DrawAt(const QPoint& at, bool on) {
  if (read_only_) return;
  SetPixel((at.x() - 1) / kScale, (at.y() - 1) / kScale, on);
  update();
  emit edited();
}

void ImageEditor::mousePressEvent(QMouseEvent* event) {
  drawing_on_ = event->button() != Qt::RightButton;
  DrawAt(event->position().toPoint(), drawing_on_);
}

void ImageEditor::mouseMoveEvent(QMouseEvent* event) {
  DrawAt(event->position().toPoint(), drawing_on_);
}

}  // namespace qv::app
