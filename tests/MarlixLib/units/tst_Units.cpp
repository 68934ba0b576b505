#include <MarlixLib/units/Quantity.h>

#include <QtTest/QTest>

#include <numbers>

using namespace Marlix;

Q_DECLARE_METATYPE(Marlix::Quantity)

namespace {
constexpr DisplayUnits CENTIMETERS_RADIANS_NITS_MINUTES { LengthUnit::Centimeter, AngleUnit::Radian, RadianceUnit::Nit,
    TimeUnit::Minute };

// The same value in every unit of a family must come back from the display unit unchanged.
template <class Unit> void checkFamilyRoundTrips()
{
    for (const auto& info : getAllUnits<Unit>()) {
        for (double base : { 0.0, 1.0, -3.25, 1e-9, 123456.789 }) {
            const double back = fromDisplayUnit(toDisplayUnit(base, info.unit), info.unit);
            QVERIFY(std::abs(back - base) <= 1e-15 * std::max(1.0, std::abs(base)));
        }
        QCOMPARE(unitFromSuffix<Unit>(info.suffix), Optional<Unit>(info.unit));
    }
}
} // namespace

class TestUnits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyUnitRoundTripsAndParsesItsSuffix();
    void suffixesAreUnique();
    void quantityConversion_data();
    void quantityConversion();
    void parse_data();
    void parse();
    void format_data();
    void format();
};

void TestUnits::everyUnitRoundTripsAndParsesItsSuffix()
{
    checkFamilyRoundTrips<LengthUnit>();
    checkFamilyRoundTrips<AngleUnit>();
    checkFamilyRoundTrips<RadianceUnit>();
    checkFamilyRoundTrips<TimeUnit>();
}

void TestUnits::suffixesAreUnique()
{
    // One typed suffix must name one unit, across every family it could be typed into.
    QStringList seen;
    const auto collect = [&](const auto& table) {
        for (const auto& info : table) {
            for (StringView s : { info.suffix, info.alternativeSuffix }) {
                const QString text = QString::fromUtf8(s.data(), qsizetype(s.size()));
                QVERIFY2(s.empty() || !seen.contains(text), qPrintable(text));
                seen << text;
            }
        }
    };
    collect(LENGTH_UNITS);
    collect(ANGLE_UNITS);
    collect(RADIANCE_UNITS);
    collect(TIME_UNITS);
}

void TestUnits::quantityConversion_data()
{
    QTest::addColumn<Quantity>("quantity");
    QTest::addColumn<double>("base");
    QTest::addColumn<double>("defaultDisplay");
    QTest::addColumn<QString>("defaultSuffix");
    QTest::addColumn<double>("otherDisplay");
    QTest::addColumn<QString>("otherSuffix");
    QTest::newRow("length") << Quantity::Length << 2.5 << 2.5 << "m" << 250.0 << "cm";
    QTest::newRow("angle") << Quantity::Angle << std::numbers::pi << 180.0 << "°" << std::numbers::pi << "rad";
    QTest::newRow("radiance") << Quantity::Radiance << 2.0 << 2.0 << "W/(m²·sr)" << 1366.0 << "cd/m²";
    QTest::newRow("time") << Quantity::Time << 90.0 << 90.0 << "s" << 1.5 << "min";
}

void TestUnits::quantityConversion()
{
    QFETCH(Quantity, quantity);
    QFETCH(double, base);
    QFETCH(double, defaultDisplay);
    QFETCH(QString, defaultSuffix);
    QFETCH(double, otherDisplay);
    QFETCH(QString, otherSuffix);
    const QuantityConversion a = getQuantityConversion(quantity, DEFAULT_DISPLAY_UNITS);
    QCOMPARE(a.toDisplay(base), defaultDisplay);
    QCOMPARE(QString::fromUtf8(a.suffix.data(), qsizetype(a.suffix.size())), defaultSuffix);
    const QuantityConversion b = getQuantityConversion(quantity, CENTIMETERS_RADIANS_NITS_MINUTES);
    QCOMPARE(b.toDisplay(base), otherDisplay);
    QCOMPARE(b.fromDisplay(otherDisplay), base);
    QCOMPARE(QString::fromUtf8(b.suffix.data(), qsizetype(b.suffix.size())), otherSuffix);
}

void TestUnits::parse_data()
{
    // Text typed into a field, and the value in the base unit or the message of the refusal.
    QTest::addColumn<QString>("text");
    QTest::addColumn<Quantity>("quantity");
    QTest::addColumn<double>("base");
    QTest::addColumn<QString>("message");
    QTest::newRow("plain number in the display unit") << "250" << Quantity::Length << 2.5 << "";
    QTest::newRow("other unit of the family") << "3 m" << Quantity::Length << 3.0 << "";
    QTest::newRow("no space") << "12mm" << Quantity::Length << 0.012 << "";
    QTest::newRow("surrounding spaces") << "  -4 in " << Quantity::Length << -0.1016 << "";
    QTest::newRow("plus sign") << "+1.5 km" << Quantity::Length << 1500.0 << "";
    QTest::newRow("exponent") << "1e2 cm" << Quantity::Length << 1.0 << "";
    QTest::newRow("feet") << "2 ft" << Quantity::Length << 0.6096 << "";
    QTest::newRow("degree sign") << "-90°" << Quantity::Angle << -std::numbers::pi / 2 << "";
    QTest::newRow("degree spelled") << "180 deg" << Quantity::Angle << std::numbers::pi << "";
    QTest::newRow("angle default radians") << "1" << Quantity::Angle << 1.0 << "";
    QTest::newRow("minutes display") << "2" << Quantity::Time << 120.0 << "";
    QTest::newRow("milliseconds") << "500 ms" << Quantity::Time << 0.5 << "";
    QTest::newRow("nits") << "683 nt" << Quantity::Radiance << 1.0 << "";
    QTest::newRow("plain") << "7.25" << Quantity::None << 7.25 << "";
    QTest::newRow("empty") << "  " << Quantity::Length << 0.0 << "No number was given.";
    QTest::newRow("no number") << "cm" << Quantity::Length << 0.0 << "\"cm\" does not start with a number.";
    QTest::newRow("unit of another family") << "3 s" << Quantity::Length << 0.0 << "\"s\" is not a unit of Length.";
    QTest::newRow("unknown unit") << "3 parsecs" << Quantity::Length << 0.0 << "\"parsecs\" is not a unit of Length.";
    QTest::newRow("unit on a plain number")
        << "3 m" << Quantity::None << 0.0 << "A plain number takes no unit, but \"m\" was given.";
    QTest::newRow("double sign") << "+-3" << Quantity::None << 0.0 << "\"+-3\" does not start with a number.";
    QTest::newRow("infinite") << "inf" << Quantity::None << 0.0 << "\"inf\" is not a finite number.";
    QTest::newRow("not a number") << "nan m" << Quantity::Length << 0.0 << "\"nan m\" is not a finite number.";
}

void TestUnits::parse()
{
    QFETCH(QString, text);
    QFETCH(Quantity, quantity);
    QFETCH(double, base);
    QFETCH(QString, message);
    const QByteArray utf8 = text.toUtf8();
    const auto value = parseQuantity(
        StringView(utf8.constData(), std::size_t(utf8.size())), quantity, CENTIMETERS_RADIANS_NITS_MINUTES);
    if (!message.isEmpty()) {
        QVERIFY(!value);
        QCOMPARE(QString::fromStdString(value.error()), message);
        return;
    }
    QVERIFY2(value.has_value(), value ? "" : value.error().c_str());
    QVERIFY2(std::abs(*value - base) <= 1e-12 * std::max(1.0, std::abs(base)), QByteArray::number(*value, 'g', 17));
}

void TestUnits::format_data()
{
    QTest::addColumn<double>("base");
    QTest::addColumn<Quantity>("quantity");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("text");
    QTest::newRow("length") << 0.125 << Quantity::Length << 2 << "12.50 cm";
    QTest::newRow("radians after a space") << std::numbers::pi / 2 << Quantity::Angle << 0 << "2 rad";
    QTest::newRow("plain") << 3.14159 << Quantity::None << 3 << "3.142";
    QTest::newRow("negative decimals count as none") << 30.0 << Quantity::Time << -2 << "0 min";
}

void TestUnits::format()
{
    QFETCH(double, base);
    QFETCH(Quantity, quantity);
    QFETCH(int, decimals);
    QFETCH(QString, text);
    QCOMPARE(QString::fromStdString(formatQuantity(base, quantity, CENTIMETERS_RADIANS_NITS_MINUTES, decimals)), text);
    const DisplayUnits degrees { LengthUnit::Meter, AngleUnit::Degree, RadianceUnit::Nit, TimeUnit::Second };
    QCOMPARE(QString::fromStdString(formatQuantity(std::numbers::pi, Quantity::Angle, degrees, 1)),
        QStringLiteral("180.0°"));
}

QTEST_GUILESS_MAIN(TestUnits)
#include "tst_Units.moc"
