#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/color/EyeDropperButton.h>
#include <MarlixLibQt/widgets/color/HexColorEditor.h>
#include <MarlixLibQt/widgets/color/ScreenColorPicker.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <MarlixLib/base/Exception.h>

#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QPainter>
#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

/// A window that shows an image, so the screen under it has known content.
class ImageWindow final : public QWidget
{
public:
    explicit ImageWindow(QImage image)
        : image(std::move(image))
    {
        setWindowFlag(Qt::FramelessWindowHint);
        setFixedSize(this->image.size());
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.drawImage(0, 0, image);
    }

private:
    QImage image;
};

// Black with one white pixel in the middle: the mean over an n × n square centred there is 1/n² of white, so every
// sample size gives its own grey.
QImage singleWhitePixel(int size)
{
    QImage image(size, size, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setPixel(size / 2, size / 2, qRgb(255, 255, 255));
    return image;
}

QImage filled(int size, const QColor& color)
{
    QImage image(size, size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

void typeHex(HexColorEditor& editor, const QString& text)
{
    editor.selectAll();
    QTest::keyClick(&editor, Qt::Key_Backspace);
    QTest::keyClicks(&editor, text);
    QTest::keyClick(&editor, Qt::Key_Return);
}

// Shows a window at a place of its own, so that sampling under one window never reads another.
void showAt(QWidget& window, const QPoint& position)
{
    window.move(position);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.repaint();
}

} // namespace

class TestScreenColorPicker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hexEntry_data();
    void hexEntry();
    void hexFollowsModel();
    void averagesImage_data();
    void averagesImage();
    void averagesOnlyInsideImage();
    void samplesScreen_data();
    void samplesScreen();
    void samplesScreenEdge();
    void eyedropperDrag_data();
    void eyedropperDrag();
    void sampleModeBox();
};

void TestScreenColorPicker::hexEntry_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QColor>("expected");
    QTest::newRow("six digits") << QStringLiteral("ff8000") << QColor(255, 128, 0);
    QTest::newRow("upper case") << QStringLiteral("00FF7F") << QColor(0, 255, 127);
    QTest::newRow("short text is padded on the left") << QStringLiteral("f80") << QColor(0x00, 0x0f, 0x80);
    QTest::newRow("not hexadecimal gives black") << QStringLiteral("zebra") << QColor(0, 0, 0);
    QTest::newRow("empty gives black") << QString() << QColor(0, 0, 0);
}

void TestScreenColorPicker::hexEntry()
{
    QFETCH(QString, typed);
    QFETCH(QColor, expected);
    auto model = makeSharedPtr<RecordingModel<QColorExtended>>(QColorExtended::fromHwbF(.5f, .2f, .3f, .4f));
    HexColorEditor editor(model);
    const int alpha = model->get().alpha();
    typeHex(editor, typed);
    QCOMPARE(model->sets, 1);
    QCOMPARE(model->get().red(), expected.red());
    QCOMPARE(model->get().green(), expected.green());
    QCOMPARE(model->get().blue(), expected.blue());
    QCOMPARE(model->get().alpha(), alpha);
    QVERIFY(!model->get().hasExplicitHwb());
}

void TestScreenColorPicker::hexFollowsModel()
{
    auto model = makeSharedPtr<VariableModel<QColorExtended>>(QColor(255, 128, 0));
    HexColorEditor editor(model);
    QCOMPARE(editor.text(), QStringLiteral("FF8000"));
    model->set(QColor(0x0a, 0xbc, 0xde, 3));
    QCOMPARE(editor.text(), QStringLiteral("0ABCDE"));
    // Showing a colour is no edit: the model is not written back.
    auto recording = makeSharedPtr<RecordingModel<QColorExtended>>(QColor(1, 2, 3));
    HexColorEditor second(recording);
    recording->set(QColor(4, 5, 6));
    QCOMPARE(second.text(), QStringLiteral("040506"));
    QCOMPARE(recording->sets, 1);
    QVERIFY(second.minimumWidth() >= 8 * second.fontMetrics().averageCharWidth());
    QCOMPARE(second.sizeHint(), second.minimumSizeHint());
}

void TestScreenColorPicker::averagesImage_data()
{
    QTest::addColumn<long long>("mode");
    QTest::addColumn<int>("side");
    for (std::size_t i = 0; i < ScreenColorPicker::SAMPLE_MODES.size(); ++i) {
        const auto& mode = ScreenColorPicker::SAMPLE_MODES[i];
        QTest::newRow(mode.text) << static_cast<long long>(i) << 2 * mode.halfSize + 1;
    }
}

void TestScreenColorPicker::averagesImage()
{
    QFETCH(long long, mode);
    QFETCH(int, side);
    const int r = ScreenColorPicker::getSampleHalfSize(mode);
    QCOMPARE(2 * r + 1, side);
    const QImage image = singleWhitePixel(41);
    const QColor mean = averageImageColor(image, QRect(20 - r, 20 - r, side, side));
    QVERIFY(mean.isValid());
    const float expected = 1.f / static_cast<float>(side * side);
    QVERIFY2(std::abs(mean.redF() - expected) < 1e-4f, qPrintable(QString::number(mean.redF())));
    QCOMPARE(mean.redF(), mean.greenF());
    QCOMPARE(mean.redF(), mean.blueF());
    QCOMPARE(mean.alphaF(), 1.f);
}

void TestScreenColorPicker::averagesOnlyInsideImage()
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setPixel(0, 0, qRgb(255, 0, 90));
    // A 3 × 3 square on the corner pixel reaches off the image: only the 4 pixels inside count.
    const QColor corner = averageImageColor(image, QRect(-1, -1, 3, 3));
    QCOMPARE(corner.red(), 64);
    QVERIFY(std::abs(corner.blueF() - 90.f / 255.f / 4.f) < 1e-4f);
    QVERIFY(!averageImageColor(image, QRect(10, 10, 3, 3)).isValid());
    QVERIFY(!averageImageColor(QImage(), QRect(0, 0, 1, 1)).isValid());
}

void TestScreenColorPicker::samplesScreen_data()
{
    averagesImage_data();
}

void TestScreenColorPicker::samplesScreen()
{
    QFETCH(long long, mode);
    QFETCH(int, side);
    ImageWindow window(singleWhitePixel(41));
    showAt(window, QPoint(200, 200));
    const QPoint centre = window.mapToGlobal(QPoint(20, 20));
    const QColor mean = sampleScreenColor(centre, ScreenColorPicker::getSampleHalfSize(mode));
    QVERIFY2(mean.isValid(), "the platform returned no screen content");
    QVERIFY2(std::abs(mean.redF() - 1.f / static_cast<float>(side * side)) < 1e-4f,
        qPrintable(QString::number(mean.redF())));
}

void TestScreenColorPicker::samplesScreenEdge()
{
    // A 31 × 31 square on the screen's corner: only its 16 × 16 pixels on the screen are averaged.
    QImage image(40, 40, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setPixel(0, 0, qRgb(255, 255, 255));
    ImageWindow window(image);
    const QPoint corner = QGuiApplication::primaryScreen()->geometry().topLeft();
    showAt(window, corner);
    QCOMPARE(window.mapToGlobal(QPoint(0, 0)), corner);
    const QColor mean = sampleScreenColor(corner, 15);
    QVERIFY(mean.isValid());
    QVERIFY2(std::abs(mean.redF() - 1.f / 256.f) < 1e-4f, qPrintable(QString::number(mean.redF() * 256.f)));
}

void TestScreenColorPicker::eyedropperDrag_data()
{
    QTest::addColumn<bool>("invert");
    QTest::addColumn<QColor>("under");
    QTest::addColumn<QColor>("expected");
    QTest::newRow("plain") << false << QColor(10, 200, 30) << QColor(10, 200, 30);
    QTest::newRow("inverting over white") << true << QColor(Qt::white) << QColor(Qt::black);
    QTest::newRow("inverting over red") << true << QColor(Qt::red) << QColor(Qt::cyan);
}

void TestScreenColorPicker::eyedropperDrag()
{
    QFETCH(bool, invert);
    QFETCH(QColor, under);
    QFETCH(QColor, expected);
    ImageWindow target(filled(60, under));
    showAt(target, QPoint(400, 300));

    auto color = makeSharedPtr<RecordingModel<QColorExtended>>(QColor(1, 2, 3, 99));
    auto mode = makeSharedPtr<VariableModel<long long>>(4);
    ScreenColorPicker picker(color, mode);
    showAt(picker, QPoint(20, 20));
    EyeDropperButton* button = invert ? picker.getInvertPickButton() : picker.getPickButton();
    QCOMPARE(button->isInverting(), invert);

    QTest::mousePress(button, Qt::LeftButton, {}, button->rect().center());
    QVERIFY(button->isPicking());
    const QPoint overTarget = button->mapFromGlobal(target.mapToGlobal(target.rect().center()));
    QTest::mouseMove(button, overTarget);
    QVERIFY(button->isPicking());
    QCOMPARE(button->getSampledColor().getColor(), expected);
    // While the drag lasts the button shows the sampled colour, and the model is left alone.
    const QImage shown = button->grab().toImage();
    QCOMPARE(QColor(shown.pixel(shown.rect().center())), expected);
    QCOMPARE(color->sets, 0);

    QTest::mouseRelease(button, Qt::LeftButton, {}, overTarget);
    QVERIFY(!button->isPicking());
    QCOMPARE(color->sets, 1);
    QCOMPARE(color->get().red(), expected.red());
    QCOMPARE(color->get().green(), expected.green());
    QCOMPARE(color->get().blue(), expected.blue());
    QCOMPARE(color->get().alpha(), 99);
}

void TestScreenColorPicker::sampleModeBox()
{
    auto color = makeSharedPtr<VariableModel<QColorExtended>>(QColor(Qt::red));
    auto mode = makeSharedPtr<VariableModel<long long>>(2);
    ScreenColorPicker picker(color, mode);
    ComboBox* box = picker.getSampleModeBox();
    QCOMPARE(box->count(), 5);
    QCOMPARE(box->itemText(0), QStringLiteral("Point Sample"));
    QCOMPARE(box->itemText(4), QStringLiteral("31 by 31 Average"));
    QCOMPARE(box->currentText(), QStringLiteral("5 by 5 Average"));
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(mode->get(), 3LL);
    mode->set(0);
    QCOMPARE(box->currentIndex(), 0);
    QVERIFY_THROWS_EXCEPTION(StopException, ScreenColorPicker::getSampleHalfSize(5));
}

QTEST_MAIN(TestScreenColorPicker)
#include "tst_ScreenColorPicker.moc"
