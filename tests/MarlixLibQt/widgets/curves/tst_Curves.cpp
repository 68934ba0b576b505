#include "MarlixLibQt/widgets/RecordingModel.h"

#include <MarlixLib/curves/CurveFile.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/curves/CurvesEditor.h>
#include <MarlixLibQt/widgets/curves/Histogram.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>

#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <fstream>
#include <memory>
#include <utility>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

Curve threePoints(CurveInterpolation interpolation = CurveInterpolation::CubicSpline)
{
    return Curve(Array<Vector2> { { 0.0, 0.0 }, { 0.5, 0.6 }, { 1.0, 1.0 } }, interpolation);
}

/// Closes the next message box from inside its event loop, keeping what it showed.
void closeNextMessageBox(QStringList& seen)
{
    QTimer::singleShot(0, [&seen] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            seen = { box->windowTitle(), box->text(), box->detailedText() };
            box->accept();
        }
    });
}

/// A viewport showing a grey image, dark on the left half and light on the right, that lends its mouse to anyone.
class GreyViewport : public IViewportHost
{
public:
    static constexpr int SIZE = 100;
    static constexpr std::uint8_t DARK = 64;
    static constexpr std::uint8_t LIGHT = 192;

    GreyViewport()
    {
        auto bitmap = std::make_shared<BitmapImpl<RgbaBytes>>(SIZE, SIZE);
        for (int y = 0; y < SIZE; ++y)
            for (int x = 0; x < SIZE; ++x) {
                const std::uint8_t tone = x < SIZE / 2 ? DARK : LIGHT;
                bitmap->at(x, y) = { tone, tone, tone, 255 };
            }
        image = bitmap;
    }
    Vector2 getViewportSize() const override { return { double(SIZE), double(SIZE) }; }
    SharedPtr<const BitmapImpl<RgbaBytes>> getViewportImage(Optional<int>) const override { return image; }
    bool requestExclusiveMouseControl(IViewportClient& client) override
    {
        holder = &client;
        client.onExclusiveMouseControlGained();
        return true;
    }
    void releaseExclusiveMouseControl(IViewportClient& client) override
    {
        if (holder == &client)
            std::exchange(holder, nullptr)->onExclusiveMouseControlLost();
    }

    SharedPtr<const BitmapImpl<RgbaBytes>> image;
    IViewportClient* holder = nullptr;
};

} // namespace

class tst_Curves : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void clickAddsPoint_data();
    void clickAddsPoint();
    void pointStopsAtNeighbour_data();
    void pointStopsAtNeighbour();
    void rightClick_data();
    void rightClick();
    void shiftWheelZoomsAroundCursor_data();
    void shiftWheelZoomsAroundCursor();
    void failedLoadChangesNothing_data();
    void failedLoadChangesNothing();
    void pickingInViewport();
    void equalizeFromViewport();
    void histogramWidgetCountsWhenShown();
    void editorChannelAndReset();
    void propertyEditorDragIsOneUndoStep();

private:
    void make(Curve active, std::size_t channels = 1);
    void drag(const QPoint& from, const QPoint& to);

    SharedPtr<RecordingModel<Marlix::Curves>> model;
    SharedPtr<VariableModel<int>> channel;
    std::unique_ptr<Widgets::Curves> widget;
    // Outlives the widget that reads it.
    std::unique_ptr<GreyViewport> viewport;
};

void tst_Curves::init()
{
    channel = makeSharedPtr<VariableModel<int>>(0);
}

void tst_Curves::cleanup()
{
    widget.reset();
    viewport.reset();
}

void tst_Curves::make(Curve active, std::size_t channels)
{
    Marlix::Curves curves(channels, DefaultCurveType::Identity);
    curves.setChannel(0, std::move(active));
    model = makeSharedPtr<RecordingModel<Marlix::Curves>>(curves);
    widget = std::make_unique<Widgets::Curves>(
        model, channel, makeSharedPtr<VariableModel<CurveInterpolation>>(CurveInterpolation::CubicSpline));
    widget->resize(210, 210);
    widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
    model->resetCounts();
}

void tst_Curves::drag(const QPoint& from, const QPoint& to)
{
    QTest::mousePress(widget.get(), Qt::LeftButton, {}, from);
    // Several steps, as a hand moves: each step writes the model inside the one bracket.
    for (int step = 1; step <= 4; ++step)
        QTest::mouseMove(widget.get(), from + (to - from) * step / 4);
    QTest::mouseRelease(widget.get(), Qt::LeftButton, {}, to);
}

void tst_Curves::clickAddsPoint_data()
{
    QTest::addColumn<int>("interpolation");
    QTest::addColumn<QPointF>("at");
    QTest::addColumn<bool>("added");
    QTest::newRow("cubic, below the curve") << int(CurveInterpolation::CubicSpline) << QPointF(0.25, 0.1) << true;
    QTest::newRow("linear, above the curve") << int(CurveInterpolation::Linear) << QPointF(0.8, 0.95) << true;
    QTest::newRow("Bézier, between the handles") << int(CurveInterpolation::Bezier) << QPointF(0.3, 0.4) << true;
    // Within the reach of the middle point's left handle (0.1): the curve would fold back.
    QTest::newRow("Bézier, inside a handle's reach") << int(CurveInterpolation::Bezier) << QPointF(0.42, 0.1) << false;
}

void tst_Curves::clickAddsPoint()
{
    QFETCH(int, interpolation);
    QFETCH(QPointF, at);
    QFETCH(bool, added);
    make(threePoints(CurveInterpolation(interpolation)));
    const QPoint click = widget->toWidget({ at.x(), at.y() }).toPoint();
    QTest::mouseClick(widget.get(), Qt::LeftButton, {}, click);

    const Curve curve = model->get().getChannel(0);
    QCOMPARE(curve.getPointCount(), added ? 4u : 3u);
    QCOMPARE(widget->isForbiddenCursorShown(), !added);
    QCOMPARE(model->begins, added ? 1 : 0);
    QCOMPARE(model->commits, model->begins);
    if (!added)
        return;
    // The point lies where the click unmaps to, within the pixel the click was rounded to.
    const Vector2 expected = widget->fromWidget(click);
    const CurvePoint& point = curve.getPoint(at.x() < 0.5 ? 1 : 2);
    QVERIFY(std::abs(point.position.x - expected.x) < 1e-9);
    QVERIFY(std::abs(point.position.y - expected.y) < 1e-9);
    QVERIFY((widget->toWidget(point.position) - QPointF(click)).manhattanLength() < 1e-6);
}

void tst_Curves::pointStopsAtNeighbour_data()
{
    QTest::addColumn<QPointF>("target");
    QTest::addColumn<double>("expectedX");
    QTest::newRow("far past the left end") << QPointF(-0.5, 0.5) << Curve::EPSILON;
    QTest::newRow("far past the right end") << QPointF(1.5, 0.5) << 1.0 - Curve::EPSILON;
    QTest::newRow("between the neighbours") << QPointF(0.7, 0.2) << 0.7;
}

void tst_Curves::pointStopsAtNeighbour()
{
    QFETCH(QPointF, target);
    QFETCH(double, expectedX);
    make(threePoints());
    drag(widget->toWidget({ 0.5, 0.6 }).toPoint(), widget->toWidget({ target.x(), target.y() }).toPoint());
    const Curve curve = model->get().getChannel(0);
    QCOMPARE(curve.getPointCount(), 3u);
    QVERIFY2(std::abs(curve.getPoint(1).position.x - expectedX) < 1.0 / widget->gridWidth(),
        qPrintable(QString::number(curve.getPoint(1).position.x)));
    QCOMPARE(model->setsOutsideBracket, 0);
    QCOMPARE(model->begins, 1);
    QCOMPARE(model->commits, 1);
}

void tst_Curves::rightClick_data()
{
    QTest::addColumn<int>("pointCount");
    QTest::addColumn<double>("x");
    QTest::addColumn<int>("expectedCount");
    QTest::newRow("middle point goes") << 3 << 0.5 << 2;
    QTest::newRow("first point stays") << 3 << 0.0 << 3;
    QTest::newRow("last point stays") << 3 << 1.0 << 3;
    QTest::newRow("two points stay") << 2 << 0.0 << 2;
}

void tst_Curves::rightClick()
{
    QFETCH(int, pointCount);
    QFETCH(double, x);
    QFETCH(int, expectedCount);
    make(pointCount == 3 ? threePoints() : Curve());
    const double y = model->get().getChannel(0).evaluate(x);
    QTest::mouseClick(widget.get(), Qt::RightButton, {}, widget->toWidget({ x, y }).toPoint());
    QCOMPARE(int(model->get().getChannel(0).getPointCount()), expectedCount);
}

void tst_Curves::shiftWheelZoomsAroundCursor_data()
{
    QTest::addColumn<int>("startZoomSteps");
    QTest::addColumn<int>("angle");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<double>("expectedZoom");
    QTest::newRow("in by two") << 0 << 360 << true << 2.0;
    QTest::newRow("in past eight") << 0 << 360 * 4 << true << 8.0;
    QTest::newRow("out below one") << 1 << -360 * 3 << true << 1.0;
    QTest::newRow("without Shift the wheel is the parent's") << 0 << 360 << false << 1.0;
}

void tst_Curves::shiftWheelZoomsAroundCursor()
{
    QFETCH(int, startZoomSteps);
    QFETCH(int, angle);
    QFETCH(bool, shift);
    QFETCH(double, expectedZoom);
    make(threePoints());
    if (startZoomSteps)
        widget->zoom(2.0, widget->toArea(widget->toWidget({ 0.7, 0.7 })));
    const QPointF cursor = widget->toWidget({ 0.5, 0.6 });
    const QPoint global = widget->mapToGlobal(cursor.toPoint());
    QWheelEvent wheel(cursor, global, {}, QPoint(0, angle), Qt::NoButton, shift ? Qt::ShiftModifier : Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget.get(), &wheel);
    QCOMPARE(wheel.isAccepted(), shift);
    QCOMPARE(widget->getZoom(), expectedZoom);
    // The point under the cursor stays there, unless the clamped offset of zoom 1 has to move it.
    if (expectedZoom > 1.0)
        QVERIFY((widget->toWidget({ 0.5, 0.6 }) - cursor).manhattanLength() < 1e-6);
    else
        QCOMPARE(widget->getOffset(), QPointF());
}

void tst_Curves::failedLoadChangesNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("details");
    const Array<std::byte> two = writeCurves(Marlix::Curves(2, DefaultCurveType::Identity));
    QTest::newRow("two curves for four channels")
        << QByteArray(reinterpret_cast<const char*>(two.data()), qsizetype(two.size()))
        << QStringLiteral("Found 2 curves, but 4 were expected.\n\nThis can be caused for example by mismatching "
                          "motion blur shutter curve and tone mapping curve files.");
    QTest::newRow("truncated file") << QByteArray("\x00\x04\x00", 3) << QString();
}

void tst_Curves::failedLoadChangesNothing()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, details);
    make(threePoints(), 4);
    const Marlix::Curves before = model->get();
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("curves.acv"));
    std::ofstream(path.toStdString(), std::ios::binary).write(bytes.constData(), bytes.size());

    QStringList seen;
    closeNextMessageBox(seen);
    QVERIFY(!widget->load(Io::Path(path.toStdString())));
    QCOMPARE(seen.value(0), QStringLiteral("Error"));
    QCOMPARE(seen.value(1), QStringLiteral("Cannot load curves from a file."));
    if (!details.isEmpty())
        QCOMPARE(seen.value(2), details);
    else
        QVERIFY(!seen.value(2).isEmpty()); // the reader's own reason
    QVERIFY(model->get() == before);
    QCOMPARE(model->sets, 0);
}

void tst_Curves::pickingInViewport()
{
    make(Curve());
    viewport = std::make_unique<GreyViewport>();
    widget->setHistogramModel(*viewport, {});
    QSignalSpy lost(widget.get(), &Widgets::Curves::exclusiveMouseControlLost);
    QVERIFY(widget->requestExclusiveMouseControl());
    QCOMPARE(viewport->holder, widget.get());

    // A press on the light half adds the light tone's point on the curve; dragging up by a fifth of the viewport
    // raises it by a fifth.
    viewport->holder->onExclusiveMousePress({ 80.0, 50.0 });
    viewport->holder->onMouseMove({ 80.0, 40.0 });
    viewport->holder->onMouseMove({ 80.0, 30.0 });
    viewport->holder->onExclusiveMouseRelease({ 80.0, 30.0 });
    const Curve curve = model->get().getChannel(0);
    QCOMPARE(curve.getPointCount(), 3u);
    const double tone = GreyViewport::LIGHT / 255.0;
    QVERIFY(std::abs(curve.getPoint(1).position.x - tone) < 1e-6);
    QVERIFY(std::abs(curve.getPoint(1).position.y - (tone + 0.2)) < 1e-6);
    QCOMPARE(model->begins, 1);
    QCOMPARE(model->commits, 1);

    widget->releaseExclusiveMouseControl();
    QCOMPARE(lost.count(), 1);
    QVERIFY(!widget->hasExclusiveMouseControl());
}

void tst_Curves::equalizeFromViewport()
{
    make(threePoints());
    viewport = std::make_unique<GreyViewport>();
    QSignalSpy counted(widget.get(), &Widgets::Curves::histogramChanged);
    widget->setHistogramModel(*viewport, {});
    widget->equalize();
    // The first count (asked for when the viewport was set) is dropped in favour of the equalizer's.
    QVERIFY(counted.wait());
    const Marlix::Histogram histogram = Marlix::Histogram::compute(*viewport->image);
    Curve expected = histogram.computeEqualizingCurve(int(ColorCurveChannel::Master));
    expected.setInterpolation(CurveInterpolation::Linear);
    QCOMPARE(model->get().getChannel(0), expected);
    QVERIFY(widget->getHistogram() == histogram);
}

void tst_Curves::histogramWidgetCountsWhenShown()
{
    viewport = std::make_unique<GreyViewport>();
    auto channel = makeSharedPtr<VariableModel<Optional<ColorCurveChannel>>>(ColorCurveChannel::Red);
    Widgets::Histogram histogram(
        channel, makeSharedPtr<VariableModel<HistogramType>>(HistogramType::Linear), *viewport);
    QVERIFY(!histogram.getCounts());
    QSignalSpy counted(&histogram, &Widgets::Histogram::histogramChanged);
    histogram.show();
    QVERIFY(counted.wait());
    const ArrayView<const std::uint64_t> red = histogram.getCounts()->getBins(int(ColorCurveChannel::Red));
    const std::uint64_t half = GreyViewport::SIZE * GreyViewport::SIZE / 2;
    QCOMPARE(red[GreyViewport::DARK], half);
    QCOMPARE(red[GreyViewport::LIGHT], half);
}

void tst_Curves::editorChannelAndReset()
{
    auto curves = makeSharedPtr<VariableModel<Marlix::Curves>>(Marlix::Curves(4, DefaultCurveType::Identity));
    CurvesEditor editor(curves, CurvesEditor::getColorChannelNames(4), CurvesEditor::getColorChannelColors(4), {},
        nullptr, DefaultCurveType::ConstantOne);
    QCOMPARE(editor.getChannelComboBox()->count(), 4);
    QCOMPARE(editor.getInterpolationComboBox()->count(), 2);
    QVERIFY(!editor.getHistogramKindComboBox());

    editor.getChannelComboBox()->setCurrentIndex(2);
    QCOMPARE(editor.getCurvesWidget()->getActiveChannel(), 2);
    editor.getInterpolationComboBox()->setCurrentIndex(1);
    QCOMPARE(curves->get().getChannel(2).getInterpolation(), CurveInterpolation::Linear);

    const QList<QAction*> actions = editor.getPresetsButton()->menu()->actions();
    QCOMPARE(actions.size(), 3);
    QCOMPARE(actions[2]->text(), QStringLiteral("Reset"));
    actions[2]->trigger();
    QCOMPARE(curves->get().getChannel(2), Curve(DefaultCurveType::ConstantOne, CurveInterpolation::Linear));
    QCOMPARE(curves->get().getChannel(0), Curve());
    // Back on another channel, the interpolation chooser shows that channel's.
    editor.getChannelComboBox()->setCurrentIndex(0);
    QCOMPARE(editor.getInterpolationComboBox()->currentIndex(), 0);
}

void tst_Curves::propertyEditorDragIsOneUndoStep()
{
    const SharedPtr<TypeDefinition> type = TypeDatabase::instance().lookupTypeDefinition("Curves");
    QVERIFY(type);
    const Marlix::Curves start(Array<Curve> { threePoints() });
    const EntityClassInfo info("CurvesObject", EntityClassInfo::entityClass(),
        { makeSharedPtr<const GroupLayout>("CurvesObject",
            Array<PropertyDefinition> { PropertyDefinition("tones", type, Value::make(type, start)) }) },
        [](const EntityClassInfo& entityClass) { return makeSharedPtr<Entity>(entityClass); });
    const EntityHolder<Entity> object = info.create();
    auto undo = makeSharedPtr<UndoManager>();
    auto host = makeSharedPtr<DefaultPropertySheetHost>(makeSharedPtr<EntityGraphTracker>(), nullptr, undo);

    std::unique_ptr<QWidget> made(
        PropertyWidgetConstructor::make(GenericPropertyAccessor(object, "tones"), { nullptr, host, {} }));
    auto* editor = qobject_cast<CurvesEditor*>(made.get());
    QVERIFY(editor);
    editor->resize(260, 300);
    editor->show();
    QVERIFY(QTest::qWaitForWindowExposed(editor));
    Widgets::Curves* curves = editor->getCurvesWidget();
    const QPoint from = curves->toWidget({ 0.5, 0.6 }).toPoint();
    QTest::mousePress(curves, Qt::LeftButton, {}, from);
    for (int step = 1; step <= 4; ++step)
        QTest::mouseMove(curves, from + QPoint(0, -8 * step));
    QTest::mouseRelease(curves, Qt::LeftButton, {}, from + QPoint(0, -32));

    QVERIFY(object->getPropertyValue<Marlix::Curves>("tones").getChannel(0).getPoint(1).position.y > 0.65);
    QCOMPARE(undo->getUndoLabels(), Array<String> { "Update of tones" });
    undo->undo();
    QVERIFY(object->getPropertyValue<Marlix::Curves>("tones") == start);
}

int main(int argc, char** argv)
{
    // The library's start-up installs the property sheet's default editors.
    LibQt::startup("Curves test", LibQt::ApplicationType::Gui, {}, Io::Path(argv[0]));
    int result = 0;
    {
        tst_Curves test;
        result = QTest::qExec(&test, argc, argv);
    }
    LibQt::shutdown();
    return result;
}

#include "tst_Curves.moc"
