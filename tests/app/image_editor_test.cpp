// The Image field's editor: the stored layout (byte 0 present, then rows top to bottom, most
// significant bit first) and the scaling and dithering of an imported picture.

#include "app/image_editor.h"

#include <QImage>
#include <QtTest>

using qv::app::ImageEditor;

class ImageEditorTest : public QObject {
  Q_OBJECT
 private slots:
  void storesRowsTopToBottomMostSignificantBitFirst() {
    ImageEditor editor;
    QCOMPARE(editor.Value(), qv::Bytes{0});  // empty
    editor.SetPixel(0, 0, true);
    editor.SetPixel(9, 1, true);
    editor.SetPixel(159, 99, true);
    qv::Bytes value = editor.Value();
    QCOMPARE(value.size(), std::size_t{2001});
    QCOMPARE(value[0], std::uint8_t{1});
    QCOMPARE(value[1], std::uint8_t{0x80});
    QCOMPARE(value[1 + 20 + 1], std::uint8_t{0x40});  // row 1 starts 20 bytes on
    QCOMPARE(value[2000], std::uint8_t{0x01});
    ImageEditor again;
    again.Load(value);
    QVERIFY(again.pixel(9, 1) && !again.pixel(8, 1));
    again.Load(qv::Bytes{1, 2, 3});  // too short: empty, never read past the end
    QCOMPARE(again.Value(), qv::Bytes{0});
  }

  void importedPicturesAreScaledToFitAndDithered() {
    // 320 x 100: twice as wide as the bitmap, so it is halved to 160 x 50 and centred.
    QImage picture(320, 100, QImage::Format_RGB32);
    picture.fill(Qt::white);
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 160; ++x) picture.setPixel(x, y, qRgb(0, 0, 0));
    ImageEditor editor;
    editor.SetPicture(picture);
    QVERIFY(editor.pixel(10, 50) && !editor.pixel(150, 50));  // black left, white right
    QVERIFY(!editor.pixel(10, 10) && !editor.pixel(10, 90));  // above and below: blank
    // Mid grey becomes about half the dots.
    QImage grey(160, 100, QImage::Format_RGB32);
    grey.fill(qRgb(128, 128, 128));
    editor.SetPicture(grey);
    int on = 0;
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 160; ++x) on += editor.pixel(x, y);
    QVERIFY2(on > 7000 && on < 9000, qPrintable(QString::number(on)));
  }
};

QTEST_MAIN(ImageEditorTest)
#include "image_editor_test.moc"
