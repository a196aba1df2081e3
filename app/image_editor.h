#pragma once
// The Image field's picture: a 160 x 100 one-bit bitmap shown twice its size. The left button
// draws, the right button erases; Clear empties it and Import scales and dithers a picture file.

#include <QWidget>
#include <array>
#include <cstdint>
#include <span>

#include "engine/bytes.h"

namespace qv::app {

class ImageEditor : public QWidget {
  Q_OBJECT
 public:
  static constexpr int kWidth = 160;
  static constexpr int kHeight = 100;
  static constexpr int kBitmapBytes = kWidth * kHeight / 8;  // 2,000
  static constexpr int kScale = 2;

  explicit ImageEditor(QWidget* parent = nullptr);
  // Byte 0 (0 empty, 1 present) and the 2,000 bitmap bytes; shorter values read as empty.
  void Load(std::span<const std::uint8_t> value);
  // {0} when empty, else the 2,001 bytes.
  Bytes Value() const;
  void Clear();
  // Scales the picture into the bitmap, keeping its proportions, with Floyd-Steinberg dithering.
  void SetPicture(const QImage& picture);
  void setReadOnly(bool on) { read_only_ = on; }
  bool pixel(int x, int y) const;
  void SetPixel(int x, int y, bool on);
  QSize sizeHint() const override;

 signals:
  void edited();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  void DrawAt(const QPoint& at, bool on);
  std::array<std::uint8_t, kBitmapBytes> bits_{};
  bool present_ = false;
  bool read_only_ = false;
  bool drawing_on_ = true;
};

}  // namespace qv::app
