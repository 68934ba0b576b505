#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLib/curves/Curves.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <QtTest/QTest>

#include <cmath>
#include <limits>

using namespace Marlix;

Q_DECLARE_METATYPE(Marlix::CurveInterpolation)
Q_DECLARE_METATYPE(Marlix::Curve)

namespace {
constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();

// Uneven spacing and a turn, so that every mode has something to get wrong.
const Array<Vector2> WAVE { { 0.0, 0.1 }, { 0.15, 0.5 }, { 0.55, 0.3 }, { 0.6, 0.35 }, { 1.0, 0.9 } };

void addModes()
{
    QTest::addColumn<CurveInterpolation>("mode");
    for (int i = 0; i < CURVE_INTERPOLATION_COUNT; ++i) {
        const auto mode = static_cast<CurveInterpolation>(i);
        QTest::newRow(String(getCurveInterpolationName(mode)).c_str()) << mode;
    }
}
} // namespace

class TestCurve : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }

    void passesThroughItsPoints_data() { addModes(); }
    void passesThroughItsPoints()
    {
        QFETCH(CurveInterpolation, mode);
        const Curve curve(WAVE, mode);
        for (const Vector2& p : WAVE)
            QVERIFY2(std::abs(curve.evaluate(p.x) - p.y) < 1e-9, qPrintable(QString::number(p.x)));
        // Collinear points at uneven spacing stay on their line, the handles lying on it too.
        const Curve line(Array<Vector2> { { 0.0, 0.0 }, { 0.1, 0.1 }, { 0.7, 0.7 }, { 1.0, 1.0 } }, mode);
        for (const double x : { 0.03, 0.3, 0.5, 0.69, 0.9 })
            QVERIFY2(std::abs(line.evaluate(x) - x) < 1e-7, qPrintable(QString::number(x)));
        // No jump where one span meets the next.
        for (std::size_t i = 1; i + 1 < WAVE.size(); ++i)
            for (const double side : { -1e-7, 1e-7 })
                QVERIFY(std::abs(curve.evaluate(WAVE[i].x + side) - WAVE[i].y) < 1e-2);
    }

    void knownValues_data()
    {
        QTest::addColumn<CurveInterpolation>("mode");
        QTest::addColumn<Curve>("curve");
        QTest::addColumn<double>("x");
        QTest::addColumn<double>("y");
        const Array<Vector2> peak { { 0.0, 0.0 }, { 0.5, 1.0 }, { 1.0, 0.0 } };
        // Natural spline: the middle second derivative is -12, so y = 3x - 4x^3 on the left half.
        QTest::newRow("cubic") << CurveInterpolation::CubicSpline << Curve(peak, CurveInterpolation::CubicSpline)
                               << 0.25 << 0.6875;
        // Uniform Catmull-Rom with mirrored ends: x(u) = u / 2, y(u) = u + u^2 - u^3.
        QTest::newRow("cubic uniform") << CurveInterpolation::CubicUniform
                                       << Curve(peak, CurveInterpolation::CubicUniform) << 0.25 << 0.625;
        QTest::newRow("linear") << CurveInterpolation::Linear << Curve(peak, CurveInterpolation::Linear) << 0.8 << 0.4;
        // Bézier from (0, 0) to (1, 1) through (0.5, 0) and (0.5, 1): at u = 1/4, x = 19/64 and y = 5/32.
        Curve s(Array<Vector2> { { 0.0, 0.0 }, { 1.0, 1.0 } }, CurveInterpolation::Bezier);
        s.setHandles(0, { -0.1, -0.1 }, { 0.5, 0.0 });
        s.setHandles(1, { 0.5, 1.0 }, { 1.1, 1.1 });
        QTest::newRow("bezier") << CurveInterpolation::Bezier << s << 19.0 / 64.0 << 5.0 / 32.0;
    }
    void knownValues()
    {
        QFETCH(Curve, curve);
        QFETCH(double, x);
        QFETCH(double, y);
        QVERIFY2(std::abs(curve.evaluate(x) - y) < 1e-9, qPrintable(QString::number(curve.evaluate(x))));
    }

    void clampsInAndOut_data() { addModes(); }
    void clampsInAndOut()
    {
        QFETCH(CurveInterpolation, mode);
        const Curve curve(Array<Vector2> { { 0.2, 0.3 }, { 0.4, 0.9 }, { 0.8, 0.6 } }, mode);
        QCOMPARE(curve(-3.0f), 0.3f);
        QCOMPARE(curve(0.1f), 0.3f);
        QCOMPARE(curve(std::numeric_limits<float>::quiet_NaN()), 0.3f);
        QCOMPARE(curve(0.9f), 0.6f);
        QCOMPARE(curve(7.0f), 0.6f);
        // A step that makes every smooth mode overshoot still reads within [0, 1].
        const Curve step(Array<Vector2> { { 0.0, 0.0 }, { 0.45, 0.0 }, { 0.46, 1.0 }, { 1.0, 1.0 } }, mode);
        for (const float y : step.sample(512))
            QVERIFY(y >= 0.0f && y <= 1.0f);
    }

    void linearIsPiecewiseStraight()
    {
        const Curve curve(WAVE, CurveInterpolation::Linear);
        QCOMPARE(curve.evaluate(0.075), 0.3);
        QCOMPARE(curve.evaluate(0.35), 0.4);
        const auto table = curve.sample(3);
        QCOMPARE(table.size(), std::size_t(3));
        QCOMPARE(table[2], 0.9f);
    }

    void bezierFollowsItsHandles()
    {
        Curve curve(Array<Vector2> { { 0.0, 0.0 }, { 1.0, 1.0 } }, CurveInterpolation::Bezier);
        QVERIFY(std::abs(curve.evaluate(0.25) - 0.25) < 1e-9);
        QVERIFY(curve.setHandles(0, { -0.1, -0.1 }, { 0.1, 0.6 }));
        const double raised = curve.evaluate(0.25);
        QVERIFY(raised > 0.4);
        // A handle dragged past the other point is held at it in x: the curve stays a function, evaluated still.
        QVERIFY(curve.setHandles(0, { -0.1, -0.1 }, { 3.0, 0.6 }));
        Curve held = curve;
        held.setHandles(0, { -0.1, -0.1 }, { 1.0, 0.6 });
        QCOMPARE(curve.evaluate(0.25), held.evaluate(0.25));
        QVERIFY(curve.evaluate(0.25) < raised);
        QVERIFY(!curve.setHandles(0, { NAN_VALUE, 0.0 }, { 0.1, 0.1 }));
        // Other modes keep the handles but ignore them.
        curve.setInterpolation(CurveInterpolation::Linear);
        QCOMPARE(curve.evaluate(0.25), 0.25);
        QCOMPARE(curve.getPoint(0).rightHandle, Vector2(3.0, 0.6));
    }

    void editing()
    {
        Curve curve;
        QCOMPARE(curve.addPoint(Vector2 { 0.5, 0.7 }), Optional<std::size_t>(1));
        QCOMPARE(curve.getPoint(1).leftHandle, Vector2(0.4, 0.6));
        QVERIFY(!curve.addPoint(Vector2 { 0.5 + 0.5 * Curve::EPSILON, 0.2 }));
        QVERIFY(!curve.addPoint(Vector2 { 0.3, 1.2 }));
        QVERIFY(!curve.addPoint(Vector2 { NAN_VALUE, 0.2 }));
        QCOMPARE(curve.getPointCount(), std::size_t(3));
        // A drag past the right neighbour stops one tone step before it, handles following.
        const Vector2 moved = curve.movePoint(1, { 1.5, -1.0 });
        QCOMPARE(moved, Vector2(1.0 - Curve::EPSILON, 0.0));
        QVERIFY(std::abs(curve.getPoint(1).rightHandle.x - (moved.x + Curve::HANDLE_OFFSET)) < 1e-12);
        QCOMPARE(curve.movePoint(0, { 0.4, 0.2 }), Vector2(0.4, 0.2));
        QCOMPARE(curve.movePoint(0, { NAN_VALUE, 0.9 }), Vector2(0.4, 0.2));
        // The end point is held a tone step right of its neighbour, which itself sits a step short of 1.
        QVERIFY(std::abs(curve.movePoint(2, { 0.2, 0.5 }).x - 1.0) < 1e-12);
        QCOMPARE(curve.addPoint(Vector2 { 0.0, 1.0 }), Optional<std::size_t>(0));
        QVERIFY(curve.removePoint(0));
        QVERIFY(curve.removePoint(1));
        QVERIFY(!curve.removePoint(0));
        QCOMPARE(curve.getPointCount(), std::size_t(2));
        QVERIFY_THROWS_EXCEPTION(StopException, curve.getPoint(2));
        curve.setInterpolation(CurveInterpolation::CubicChordal);
        curve.reset(DefaultCurveType::ConstantOne);
        QCOMPARE(curve, Curve(DefaultCurveType::ConstantOne, CurveInterpolation::CubicChordal));
        QCOMPARE(curve(0.0f), 1.0f);
        QCOMPARE(curve(0.5f), 1.0f);
        const auto table = Curve().makeByteTable();
        for (int v = 0; v < 256; ++v)
            QCOMPARE(int(table[std::size_t(v)]), v);
    }

    void refusesBadPoints_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("one point") << "linear: 0.5 0.5"
                                   << "needs at least 2 points";
        QTest::newRow("outside") << "linear: 0 0, 1 1.5"
                                 << "Point 2 lies at (1, 1.5)";
        QTest::newRow("not sorted") << "cubic: 0.5 0, 0.2 1"
                                    << "Point 2 lies at x 0.2";
        QTest::newRow("too close") << "cubic: 0 0, 0.001 1"
                                   << "less than 1/255";
        QTest::newRow("nan") << "cubic: 0 0, nan 1"
                             << "Point 2";
        QTest::newRow("infinite handle") << "bezier: 0 0 [0 0 inf 0], 1 1"
                                         << "not a finite number";
        QTest::newRow("unknown mode") << "spline: 0 0, 1 1"
                                      << "\"spline\" is not an interpolation";
        QTest::newRow("no colon") << "0 0, 1 1"
                                  << "expected an interpolation";
        QTest::newRow("three numbers") << "linear: 0 0 0, 1 1"
                                       << "point 1";
        QTest::newRow("second curve") << "linear: 0 0, 1 1; linear: 0 0"
                                      << "Curve 2:";
    }
    void refusesBadPoints()
    {
        QFETCH(QString, text);
        QFETCH(QString, message);
        const auto type = TypeDatabase::instance().lookupTypeDefinition("Curves");
        QVERIFY(type);
        Curves target(2, DefaultCurveType::Identity);
        const Curves before = target;
        const auto parsed = type->fromString(text.toStdString(), &target);
        QVERIFY(!parsed);
        QVERIFY2(QString::fromStdString(parsed.error()).contains(message), parsed.error().c_str());
        QCOMPARE(target, before);
        QVERIFY_THROWS_EXCEPTION(Exception, Curve(Array<Vector2> { { 0.5, 0.5 } }, CurveInterpolation::Linear));
    }

    void textAndStreamRoundTrip()
    {
        Curve bezier(WAVE, CurveInterpolation::Bezier);
        bezier.setHandles(2, { 0.5, 0.2 }, { 0.58, 0.5 });
        const Curves curves(Array<Curve> { Curve(WAVE, CurveInterpolation::CubicSpline), bezier,
            Curve(DefaultCurveType::ConstantOne, CurveInterpolation::Linear) });
        const auto type = TypeDatabase::instance().lookupTypeDefinition("Curves");
        const String text = type->toString(&curves);
        QVERIFY(text.starts_with("cubic: 0 0.1, 0.15 0.5, "));
        QVERIFY(text.find("0.55 0.3 [0.5 0.2 0.58 0.5]") != String::npos);
        QVERIFY(text.ends_with("; linear: 0 1, 1 1"));
        Curves parsed;
        QVERIFY(type->fromString(text, &parsed));
        QCOMPARE(parsed, curves);

        CborSerializer out;
        out.serializeFormatVersion(1);
        type->serialize(out, "curves", &curves);
        const auto bytes = out.getBytes();
        CborDeserializer in(bytes);
        QVERIFY(in.deserializeFormatVersion());
        Curves read;
        const EntityResolver noEntities
            = [](std::uint64_t) -> Expected<SharedPtr<Entity>, String> { return Unexpected<String>("none"); };
        QVERIFY(type->deserialize(in, "curves", noEntities, &read));
        QCOMPARE(read, curves);
        QVERIFY_THROWS_EXCEPTION(StopException, read.getChannel(3));

        // A stream whose curve breaks a rule is refused with the reason, and the target keeps its curves.
        CborSerializer bad;
        bad.serializeFormatVersion(1);
        bad.beginArray("curves", 1);
        bad.beginRecord("curve");
        bad.writeUInt("interpolation", 1);
        bad.beginArray("points", 1);
        bad.beginRecord("point");
        for (const char* key : { "position", "left", "right" }) {
            bad.beginArray(key, 2);
            bad.writeFloat("c", 0.5);
            bad.writeFloat("c", 0.5);
            bad.endArray();
        }
        bad.endRecord();
        bad.endArray();
        bad.endRecord();
        bad.endArray();
        const auto badBytes = bad.getBytes();
        CborDeserializer badIn(badBytes);
        QVERIFY(badIn.deserializeFormatVersion());
        const auto refused = type->deserialize(badIn, "curves", noEntities, &read);
        QVERIFY(!refused && refused.error().find("needs at least 2 points") != String::npos);
        QCOMPARE(read, curves);
    }

    void appliesColorCurves()
    {
        // The master curve halves every colour, then each colour's own curve; a missing blue curve passes blue.
        const Curves curves(Array<Curve> { Curve(Array<Vector2> { { 0, 0 }, { 1, 0.5 } }, CurveInterpolation::Linear),
            Curve(), Curve(DefaultCurveType::ConstantOne) });
        Array<RgbaBytes> pixels { { 200, 100, 50, 77 }, { 0, 0, 255, 255 } };
        applyColorCurves(curves, pixels);
        QCOMPARE(pixels[0], (RgbaBytes { 100, 255, 25, 77 }));
        QCOMPARE(pixels[1], (RgbaBytes { 0, 255, 128, 255 }));
    }
};

QTEST_GUILESS_MAIN(TestCurve)
#include "tst_Curve.moc"
