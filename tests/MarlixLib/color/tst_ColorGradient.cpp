#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/ColorGradient.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/data/Value.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <QtTest/QTest>

#include <cmath>
#include <limits>

using namespace Marlix;

namespace {
const Rgb RED { 1.0f, 0.0f, 0.0f, 1.0f };
const Rgb BLUE { 0.0f, 0.0f, 1.0f, 0.0f };
const Rgb WHITE { 1.0f, 1.0f, 1.0f, 1.0f };

// Red at 0.2, blue (transparent) at 0.6, and a hard edge to white at 0.8.
ColorGradient sample()
{
    return ColorGradient({ { WHITE, 1.0f }, { BLUE, 0.6f }, { RED, 0.2f }, { BLUE, 0.8f }, { WHITE, 0.8f } });
}

bool near(const Rgb& a, const Rgb& b)
{
    constexpr float EPSILON = 1e-6f;
    return std::abs(a.r - b.r) < EPSILON && std::abs(a.g - b.g) < EPSILON && std::abs(a.b - b.b) < EPSILON
        && std::abs(a.a - b.a) < EPSILON;
}

Array<std::byte> write(const ColorGradient& gradient)
{
    CborSerializer out;
    out.serializeFormatVersion(1);
    TypeDatabase::instance().lookupNativeTypeDefinition<ColorGradient>()->serialize(out, "gradient", &gradient);
    return out.getBytes();
}

Expected<void, String> read(ArrayView<const std::byte> bytes, ColorGradient& target)
{
    CborDeserializer in(bytes);
    const EntityResolver noEntities
        = [](std::uint64_t) -> Expected<SharedPtr<Entity>, String> { return Unexpected<String>("no entities here"); };
    return TypeDatabase::instance().lookupNativeTypeDefinition<ColorGradient>()->deserialize(
        in, "gradient", noEntities, &target);
}
} // namespace

class TestColorGradient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }

    void colorAt_data();
    void colorAt();
    void emptyAndSingleStop();
    void badPositionsChangeNothing_data();
    void badPositionsChangeNothing();
    void badColoursAreMadeFinite();
    void addAndRemove();
    void textForm();
    void badText_data();
    void badText();
    void serializationRoundTrip_data();
    void serializationRoundTrip();
    void corruptStreamKeepsValue_data();
    void corruptStreamKeepsValue();
};

void TestColorGradient::colorAt_data()
{
    QTest::addColumn<float>("position");
    QTest::addColumn<Rgb>("expected");
    QTest::newRow("before the first stop") << 0.0f << RED;
    QTest::newRow("on the first stop") << 0.2f << RED;
    QTest::newRow("halfway, alpha mixed too") << 0.4f << Rgb { 0.5f, 0.0f, 0.5f, 0.5f };
    QTest::newRow("a quarter") << 0.3f << Rgb { 0.75f, 0.0f, 0.25f, 0.75f };
    QTest::newRow("just before the hard edge") << 0.79999f << BLUE;
    QTest::newRow("on the hard edge takes the later colour") << 0.8f << WHITE;
    QTest::newRow("after the edge") << 0.9f << WHITE;
    QTest::newRow("below 0 clamps") << -3.0f << RED;
    QTest::newRow("above 1 clamps") << 7.0f << WHITE;
    QTest::newRow("NaN reads as 0") << std::numeric_limits<float>::quiet_NaN() << RED;
}

void TestColorGradient::colorAt()
{
    QFETCH(float, position);
    QFETCH(Rgb, expected);
    const Rgb actual = sample().getRgbAt(position);
    QVERIFY2(near(actual, expected),
        qPrintable(QString("(%1, %2, %3, %4)").arg(actual.r).arg(actual.g).arg(actual.b).arg(actual.a)));
}

void TestColorGradient::emptyAndSingleStop()
{
    const ColorGradient empty;
    QVERIFY(empty.isEmpty());
    QCOMPARE(empty.getRgbAt(0.5f), (Rgb { 0.0f, 0.0f, 0.0f, 1.0f }));
    const ColorGradient single({ { BLUE, 0.5f } });
    QCOMPARE(single.getRgbAt(0.0f), BLUE);
    QCOMPARE(single.getRgbAt(1.0f), BLUE);
}

void TestColorGradient::badPositionsChangeNothing_data()
{
    QTest::addColumn<float>("position");
    QTest::newRow("negative") << -0.01f;
    QTest::newRow("above one") << 1.5f;
    QTest::newRow("NaN") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity();
}

void TestColorGradient::badPositionsChangeNothing()
{
    QFETCH(float, position);
    ColorGradient gradient = sample();
    QVERIFY_THROWS_EXCEPTION(Exception, gradient.addStop({ RED, position }));
    QVERIFY_THROWS_EXCEPTION(Exception, gradient.setStops({ { RED, 0.5f }, { BLUE, position } }));
    QVERIFY_THROWS_EXCEPTION(Exception, ColorGradient({ { RED, position } }));
    QCOMPARE(gradient, sample());
}

void TestColorGradient::badColoursAreMadeFinite()
{
    // A stop from a file must not poison the ramp: not a number reads as 0 (alpha as opaque), infinities as 1 or 0.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const Rgb bad { nan, inf, -inf, nan };
    const Rgb made { 0.0f, 1.0f, 0.0f, 1.0f };
    ColorGradient gradient({ { bad, 0.5f } });
    QCOMPARE(gradient.getStops()[0].color, made);
    gradient.setStops({ { RED, 0.0f }, { bad, 1.0f } });
    QCOMPARE(gradient.getStops()[1].color, made);
    gradient.addStop({ bad, 0.5f });
    QCOMPARE(gradient.getRgbAt(0.5f), made);
    QCOMPARE(gradient.getRgbAt(0.75f), made);
}

void TestColorGradient::addAndRemove()
{
    ColorGradient gradient = sample();
    QCOMPARE(gradient.addStop({ RED, 0.8f }), std::size_t(4)); // after the stops already at 0.8
    QCOMPARE(gradient.addStop({ BLUE, 0.0f }), std::size_t(0));
    QCOMPARE(gradient.getStopCount(), std::size_t(7));
    gradient.removeStop(0);
    gradient.removeStop(4);
    QCOMPARE(gradient, sample());
    QVERIFY_THROWS_EXCEPTION(Exception, gradient.removeStop(5));
    QCOMPARE(gradient, sample());
    while (!gradient.isEmpty())
        gradient.removeStop(0);
    QVERIFY(gradient != sample());
}

void TestColorGradient::textForm()
{
    const auto type = TypeDatabase::instance().lookupTypeDefinition("ColorGradient");
    QVERIFY(type);
    QCOMPARE(type, TypeDatabase::instance().lookupNativeTypeDefinition<ColorGradient>());
    const ColorGradient gradient({ { RED, 0.0f }, { Rgb { 0.5f, 0.25f, 0.0f, 1.0f }, 0.5f } });
    const String text = type->toString(&gradient);
    QCOMPARE(text, String("0 (1, 0, 0, 1); 0.5 (0.5, 0.25, 0, 1)"));
    ColorGradient parsed;
    QVERIFY(type->fromString(text, &parsed));
    QCOMPARE(parsed, gradient);
    QVERIFY(type->fromString("  ", &parsed));
    QVERIFY(parsed.isEmpty());
    QVERIFY(type->fromString("1 (0,0,1,1);0(1,0,0,1)", &parsed));
    QCOMPARE(parsed, (ColorGradient({ { RED, 0.0f }, { Rgb { 0.0f, 0.0f, 1.0f, 1.0f }, 1.0f } })));
}

void TestColorGradient::badText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("no colour") << "0.5";
    QTest::newRow("position not a number") << "half (1, 0, 0, 1)";
    QTest::newRow("position out of range") << "1.5 (1, 0, 0, 1)";
    QTest::newRow("three components") << "0.5 (1, 0, 0)";
    QTest::newRow("second stop broken") << "0 (1, 0, 0, 1); 1 (1, x, 0, 1)";
    QTest::newRow("colour not a number") << "0.5 (nan, 0, 0, 1)";
    QTest::newRow("colour infinite") << "0 (1, 0, 0, 1); 0.5 (1, inf, 0, 1)";
}

void TestColorGradient::badText()
{
    QFETCH(QString, text);
    const auto type = TypeDatabase::instance().lookupNativeTypeDefinition<ColorGradient>();
    ColorGradient target = sample();
    const auto result = type->fromString(text.toStdString(), &target);
    QVERIFY(!result);
    QVERIFY(!result.error().empty());
    QCOMPARE(target, sample());
}

void TestColorGradient::serializationRoundTrip_data()
{
    QTest::addColumn<ColorGradient>("gradient");
    QTest::newRow("empty") << ColorGradient();
    QTest::newRow("five stops with an edge") << sample();
    QTest::newRow("light above one") << ColorGradient({ { Rgb { 40.0f, 2.5f, 0.125f, 1.0f }, 0.333f } });
}

void TestColorGradient::serializationRoundTrip()
{
    QFETCH(ColorGradient, gradient);
    ColorGradient target = sample();
    const auto bytes = write(gradient);
    const auto result = read(bytes, target);
    QVERIFY2(result, result ? "" : result.error().c_str());
    QCOMPARE(target, gradient);
}

void TestColorGradient::corruptStreamKeepsValue_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const Array<std::byte> good = write(sample());
    const auto toQt = [](ArrayView<const std::byte> b) {
        return QByteArray(reinterpret_cast<const char*>(b.data()), static_cast<qsizetype>(b.size()));
    };
    QTest::newRow("truncated") << toQt(ArrayView<const std::byte>(good).first(good.size() - 5));
    QByteArray flipped = toQt(good);
    flipped[flipped.size() / 2] = char(0xff);
    QTest::newRow("byte flipped") << flipped;

    const auto stream = [&](auto writeStops) {
        CborSerializer out;
        out.serializeFormatVersion(1);
        writeStops(out);
        return toQt(out.getBytes());
    };
    QTest::newRow("not an array") << stream([](CborSerializer& out) { out.writeFloat("gradient", 0.5); });
    QTest::newRow("stop without colour") << stream([](CborSerializer& out) {
        out.beginArray("gradient", 1);
        out.beginRecord("stop");
        out.writeFloat("position", 0.5);
        out.endRecord();
        out.endArray();
    });
    QTest::newRow("colour not a number") << stream([](CborSerializer& out) {
        out.beginArray("gradient", 1);
        out.beginRecord("stop");
        out.writeFloat("position", 0.5);
        out.beginArray("color", 4);
        for (double c : { 1.0, std::numeric_limits<double>::quiet_NaN(), 0.0, 1.0 })
            out.writeFloat({}, c);
        out.endArray();
        out.endRecord();
        out.endArray();
    });
    QTest::newRow("number instead of stop") << stream([](CborSerializer& out) {
        out.beginArray("gradient", 1);
        out.writeFloat({}, 0.5);
        out.endArray();
    });
}

void TestColorGradient::corruptStreamKeepsValue()
{
    QFETCH(QByteArray, bytes);
    ColorGradient target = sample();
    const auto result
        = read(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()), target);
    QVERIFY(!result);
    QVERIFY(!result.error().empty());
    QCOMPARE(target, sample());
}

QTEST_GUILESS_MAIN(TestColorGradient)
#include "tst_ColorGradient.moc"
