#include <MarlixLib/base/Exception.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <QtTest/QTest>

#include <cmath>
#include <limits>

using namespace Marlix;

namespace {

// Everything a stream can hold, read back through the same keys.
struct Sample
{
    std::uint32_t version = 7;
    bool flag = true;
    std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    double ratio = 0.1;
    double negativeZero = -0.0;
    double infinity = std::numeric_limits<double>::infinity();
    String name = "Würfel \xe2\x80\x9c"
                  "cube\xe2\x80\x9d";
    Array<std::byte> bytes { std::byte(0), std::byte(255), std::byte(128) };
    std::uint64_t reference = 0x0123456789abcdefull;
    std::uint64_t noReference = 0;
    Array<String> itemNames { "a", "b", "c" };
    Array<double> values { 1.5, -2.25, 1e300 };

    friend bool operator==(const Sample&, const Sample&) = default;
};

void write(ISerializer& out, const Sample& s)
{
    out.serializeFormatVersion(s.version);
    out.writeBool("flag", s.flag);
    out.beginRecord("numbers");
    out.writeInt("smallest", s.smallest);
    out.writeUInt("largest", s.largest);
    out.writeFloat("ratio", s.ratio);
    out.writeFloat("negativeZero", s.negativeZero);
    out.writeFloat("infinity", s.infinity);
    out.endRecord();
    out.writeString("name", s.name);
    out.writeBytes("bytes", s.bytes);
    out.writeEntityReference("reference", s.reference);
    out.writeEntityReference("noReference", s.noReference);
    // The same key repeated, as caches write their entries.
    for (const String& itemName : s.itemNames) {
        out.beginRecord("item");
        out.writeString("name", itemName);
        out.endRecord();
    }
    out.beginArray("values", s.values.size());
    for (double v : s.values)
        out.writeFloat({}, v);
    out.endArray();
}

#define TRY(target, expression)                                                                                        \
    {                                                                                                                  \
        auto result_ = (expression);                                                                                   \
        if (!result_)                                                                                                  \
            return Unexpected<String>(result_.error());                                                                \
        target = std::move(*result_);                                                                                  \
    }

// Reads in another order than written, to show that keys are found wherever they are.
Expected<Sample, String> read(IDeserializer& in)
{
    Sample s;
    s.itemNames.clear();
    s.values.clear();
    TRY(s.version, in.deserializeFormatVersion());
    TRY(s.name, in.readString("name"));
    TRY(s.flag, in.readBool("flag"));
    if (auto entered = in.enterRecord("numbers"); !entered)
        return Unexpected<String>(entered.error());
    TRY(s.largest, in.readUInt("largest"));
    TRY(s.smallest, in.readInt("smallest"));
    TRY(s.ratio, in.readFloat("ratio"));
    TRY(s.negativeZero, in.readFloat("negativeZero"));
    TRY(s.infinity, in.readFloat("infinity"));
    in.leaveRecord();
    TRY(s.bytes, in.readBytes("bytes"));
    TRY(s.reference, in.readEntityReference("reference"));
    TRY(s.noReference, in.readEntityReference("noReference"));
    while (in.hasKey("item")) {
        if (auto entered = in.enterRecord("item"); !entered)
            return Unexpected<String>(entered.error());
        String itemName;
        TRY(itemName, in.readString("name"));
        s.itemNames.push_back(itemName);
        in.leaveRecord();
    }
    std::size_t count = 0;
    TRY(count, in.enterArray("values"));
    for (std::size_t i = 0; i < count; ++i) {
        double v = 0;
        TRY(v, in.readFloat("ignored"));
        s.values.push_back(v);
    }
    in.leaveArray();
    return s;
}

Array<std::byte> encode(const Sample& sample)
{
    CborSerializer out;
    write(out, sample);
    return out.getBytes();
}

Array<std::byte> raw(std::initializer_list<int> values)
{
    Array<std::byte> bytes;
    for (int v : values)
        bytes.push_back(std::byte(v));
    return bytes;
}

// One kind of value per key, to read each with every reader.
Array<std::byte> encodeOneOfEach()
{
    CborSerializer out;
    out.serializeFormatVersion(1);
    out.writeBool("bool", true);
    out.writeInt("int", -5);
    out.writeFloat("float", 2.5);
    out.writeString("string", "text");
    out.writeBytes("bytes", raw({ 1, 2 }));
    out.writeEntityReference("entity", 9);
    out.beginRecord("record");
    out.endRecord();
    out.beginArray("array", 0);
    out.endArray();
    return out.getBytes();
}

} // namespace

class TestCbor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip();
    void repeatedKeysComeBackInOrder();
    void wrongKindIsAnErrorAndConsumesNothing_data();
    void wrongKindIsAnErrorAndConsumesNothing();
    void integerRanges();
    void messagesNameThePath();
    void everyTruncationIsAnError();
    void corruptStreamsAreErrors_data();
    void corruptStreamsAreErrors();
    void formatVersionChecks();
    void misuseStops();
};

void TestCbor::roundTrip()
{
    const Sample sample;
    const Array<std::byte> bytes = encode(sample);
    CborDeserializer in(bytes);
    QVERIFY(in.getStreamError().empty());
    const auto back = read(in);
    QVERIFY2(back.has_value(), back ? "" : back.error().c_str());
    QVERIFY(*back == sample);
    QVERIFY(std::signbit(back->negativeZero));
    // Not a number survives too, but never compares equal.
    CborSerializer out;
    out.serializeFormatVersion(1);
    out.writeFloat("nan", std::numeric_limits<double>::quiet_NaN());
    CborDeserializer nanIn(out.getBytes());
    QVERIFY(std::isnan(nanIn.readFloat("nan").value()));
}

void TestCbor::repeatedKeysComeBackInOrder()
{
    CborSerializer out;
    out.serializeFormatVersion(1);
    for (const auto& [key, value] : { std::pair { "x", 1 }, { "y", 10 }, { "x", 2 }, { "x", 3 } })
        out.writeInt(key, value);
    CborDeserializer in(out.getBytes());
    QCOMPARE(in.readInt("x").value(), 1);
    QCOMPARE(in.readInt("x").value(), 2);
    QCOMPARE(in.readInt("y").value(), 10);
    QVERIFY(!in.hasKey("y"));
    QVERIFY(in.hasKey("x"));
    QCOMPARE(in.readInt("x").value(), 3);
    QVERIFY(!in.hasKey("x"));
    QVERIFY(!in.readInt("x"));
}

void TestCbor::wrongKindIsAnErrorAndConsumesNothing_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : { "bool", "int", "float", "string", "bytes", "entity", "record", "array" })
        QTest::newRow(key) << key;
}

namespace {
// The error of reading `key` as `kind`, or nothing when the read succeeds.
Optional<String> readAs(IDeserializer& in, const String& kind, StringView key)
{
    const auto error = [](const auto& result) { return result ? Optional<String>() : Optional<String>(result.error()); };
    if (kind == "bool")
        return error(in.readBool(key));
    if (kind == "int")
        return error(in.readInt(key));
    if (kind == "float")
        return error(in.readFloat(key));
    if (kind == "string")
        return error(in.readString(key));
    if (kind == "bytes")
        return error(in.readBytes(key));
    if (kind == "entity")
        return error(in.readEntityReference(key));
    if (kind == "record")
        return error(in.enterRecord(key));
    return error(in.enterArray(key));
}
} // namespace

void TestCbor::wrongKindIsAnErrorAndConsumesNothing()
{
    QFETCH(QString, key);
    const String k = key.toStdString();
    const Array<std::byte> bytes = encodeOneOfEach();
    // Every reader but the matching one fails on this key, names the kind found, and leaves the value in place.
    for (const String kind : { "bool", "int", "float", "string", "bytes", "entity", "record", "array" }) {
        if (kind == k)
            continue;
        CborDeserializer in(bytes);
        const auto error = readAs(in, kind, k);
        QVERIFY2(error, kind.c_str());
        QVERIFY2(error->find("\"" + k + "\"") != String::npos, error->c_str());
        QVERIFY2(error->find(", not ") != String::npos, error->c_str());
        QVERIFY(in.hasKey(k));
        QVERIFY(!readAs(in, k, k));
    }
}

void TestCbor::integerRanges()
{
    // Each integer read takes the values that fit it, and only those.
    constexpr auto largestSigned = std::uint64_t(std::numeric_limits<std::int64_t>::max());
    CborSerializer out;
    out.serializeFormatVersion(1);
    out.writeInt("negative", -1);
    out.writeUInt("largest signed", largestSigned);
    out.writeUInt("above signed", largestSigned + 1);
    CborDeserializer in(out.getBytes());
    QVERIFY(!in.readUInt("negative"));
    QCOMPARE(in.readInt("negative").value(), -1);
    QCOMPARE(in.readInt("largest signed").value(), std::int64_t(largestSigned));
    QVERIFY(!in.readInt("above signed"));
    QCOMPARE(in.readUInt("above signed").value(), largestSigned + 1);
}

void TestCbor::messagesNameThePath()
{
    CborDeserializer in(encode(Sample {}));
    QVERIFY(in.deserializeFormatVersion());
    QVERIFY(in.enterRecord("numbers"));
    QCOMPARE(in.readFloat("scale").error(), String("The stream has no value \"numbers/scale\"."));
    in.leaveRecord();
    QVERIFY(!in.enterRecord("nothing"));
    QCOMPARE(in.enterArray("values").value(), std::size_t(3));
    for (int i = 0; i < 3; ++i) {
        QVERIFY(in.hasKey({}));
        QVERIFY(in.readFloat({}));
    }
    QVERIFY(!in.hasKey({}));
    QCOMPARE(in.readFloat({}).error(), String("No values are left in value 3 of \"values\"."));
    in.leaveArray();
}

void TestCbor::everyTruncationIsAnError()
{
    const Array<std::byte> bytes = encode(Sample {});
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        CborDeserializer in(ArrayView<const std::byte>(bytes.data(), length));
        QVERIFY2(!in.getStreamError().empty(), qPrintable(QString::number(length)));
        const auto result = read(in);
        QVERIFY(!result);
        QCOMPARE(result.error(), in.getStreamError());
        QVERIFY(!in.hasKey("flag"));
    }
}

void TestCbor::corruptStreamsAreErrors_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QString>("message");
    const auto bytes = [](std::initializer_list<int> v) {
        QByteArray a;
        for (int b : v)
            a.append(char(b));
        return a;
    };
    QTest::newRow("empty") << QByteArray() << "truncated";
    QTest::newRow("root is a number") << bytes({ 0x01 }) << "does not start with a record";
    QTest::newRow("root has a key without value") << bytes({ 0x81, 0x61, 'a' }) << "does not start with a record";
    QTest::newRow("root key is not a string") << bytes({ 0x82, 0x01, 0x02 }) << "does not start with a record";
    QTest::newRow("trailing bytes") << bytes({ 0x80, 0x00 }) << "corrupted";
    QTest::newRow("huge array length") << bytes({ 0x9b, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff })
                                       << "truncated";
    QTest::newRow("huge string length") << bytes({ 0x82, 0x61, 'a', 0x7b, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
        0xff }) << "truncated";
    QTest::newRow("tag") << bytes({ 0x82, 0x61, 'a', 0xd8, 0x27, 0x01 }) << "corrupted";
    QTest::newRow("reserved byte") << bytes({ 0x82, 0x61, 'a', 0x1c }) << "corrupted";
    QTest::newRow("indefinite length") << bytes({ 0x82, 0x61, 'a', 0x9f, 0xff }) << "indefinite";
    QTest::newRow("undefined value") << bytes({ 0x82, 0x61, 'a', 0xf7 }) << "corrupted";
    QTest::newRow("map key is not a string") << bytes({ 0x82, 0x61, 'a', 0xa1, 0x01, 0x02 }) << "corrupted";
    QTest::newRow("inner record key is not a string") << bytes({ 0x82, 0x61, 'a', 0x82, 0x01, 0x02 })
                                                      << "not a list of keys and values";
    QTest::newRow("inner record without its last value") << bytes({ 0x82, 0x61, 'a', 0x81, 0x61, 'b' })
                                                         << "not a list of keys and values";
    QByteArray deep(100000, char(0x81));
    deep.append(char(0x80));
    QTest::newRow("nested far too deep") << deep << "nested more than 200 levels";
}

void TestCbor::corruptStreamsAreErrors()
{
    QFETCH(QByteArray, stream);
    QFETCH(QString, message);
    CborDeserializer in(
        ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(stream.constData()), std::size_t(stream.size())));
    QVERIFY2(QString::fromStdString(in.getStreamError()).contains(message), in.getStreamError().c_str());
    QVERIFY(!in.deserializeFormatVersion());
    QVERIFY(!in.readBool("a"));
}

void TestCbor::formatVersionChecks()
{
    // A record without the version pair first.
    CborSerializer out;
    out.serializeFormatVersion(3);
    out.beginRecord("inner");
    out.writeUInt("@version", 5);
    out.endRecord();
    out.writeInt("after", 9);
    const auto bytes = out.getBytes();
    CborDeserializer in(bytes);
    QVERIFY(in.enterRecord("inner"));
    QVERIFY(!in.deserializeFormatVersion());
    // Left unread, the record is skipped whole.
    in.leaveRecord();
    QCOMPARE(in.readInt("after").value(), 9);
    QCOMPARE(in.deserializeFormatVersion().value(), 3u);
    QVERIFY(!in.deserializeFormatVersion()); // read once, it is used up

    const auto versionTooLarge
        = raw({ 0x82, 0x68, '@', 'v', 'e', 'r', 's', 'i', 'o', 'n', 0x1b, 0, 0, 0, 1, 0, 0, 0, 0 });
    QVERIFY(!CborDeserializer(versionTooLarge).deserializeFormatVersion());
    const auto noVersion = raw({ 0x82, 0x61, 'a', 0x01 });
    QCOMPARE(QString::fromStdString(CborDeserializer(noVersion).deserializeFormatVersion().error()),
        QStringLiteral("The stream has no format version."));
}

void TestCbor::misuseStops()
{
    CborSerializer out;
    QVERIFY_THROWS_EXCEPTION(StopException, out.writeInt("before the version", 1));
    out.serializeFormatVersion(1);
    QVERIFY_THROWS_EXCEPTION(StopException, out.serializeFormatVersion(2));
    out.beginArray("a", 2);
    out.writeInt({}, 1);
    QVERIFY_THROWS_EXCEPTION(StopException, out.endArray());
    out.writeInt({}, 2);
    QVERIFY_THROWS_EXCEPTION(StopException, out.writeInt({}, 3));
    QVERIFY_THROWS_EXCEPTION(StopException, out.endRecord());
    out.endArray();
    out.beginRecord("numbers");
    QVERIFY_THROWS_EXCEPTION(StopException, out.getBytes());
    out.endRecord();

    CborDeserializer in(out.getBytes());
    QVERIFY_THROWS_EXCEPTION(StopException, in.leaveRecord());
    QVERIFY_THROWS_EXCEPTION(StopException, in.leaveArray());
    QVERIFY(in.enterRecord("numbers"));
    QVERIFY_THROWS_EXCEPTION(StopException, in.leaveArray());
    in.leaveRecord();
}

QTEST_GUILESS_MAIN(TestCbor)
#include "tst_Cbor.moc"
