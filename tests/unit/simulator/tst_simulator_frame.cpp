#include "simulator/frame.h"

#include <QTest>

using simulator::Bytes;

namespace
{
Bytes bytes(const char *hex)
{
    const QByteArray raw = QByteArray::fromHex(hex);
    return Bytes(raw.begin(), raw.end());
}

QByteArray hex(const Bytes &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()))
        .toHex();
}
} // namespace

class SimulatorFrameTest : public QObject
{
    Q_OBJECT

private slots:
    void encodes_data();
    void encodes();
    void decodes_data();
    void decodes();
    void keepsTheRawBytes();
    void forgetsAFrameOnReset();
    void decodesWhatItEncodes();
};

void SimulatorFrameTest::encodes_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("version") << QByteArray("0002") << QByteArray("55550002fe04");
    QTest::newRow("reset") << QByteArray("0000") << QByteArray("555500000004");
    QTest::newRow("nothing") << QByteArray() << QByteArray("55550004");
    QTest::newRow("erase of a page")
        << QByteArray("0301009c00") << QByteArray("55550301009c006004");
    QTest::newRow("payload STX") << QByteArray("55") << QByteArray("55550555ab04");
    QTest::newRow("payload ETX") << QByteArray("04") << QByteArray("55550504fc04");
    QTest::newRow("payload escape") << QByteArray("05") << QByteArray("55550505fb04");
    QTest::newRow("checksum STX") << QByteArray("ab") << QByteArray("5555ab055504");
    QTest::newRow("checksum ETX") << QByteArray("fc") << QByteArray("5555fc050404");
    QTest::newRow("checksum escape") << QByteArray("fb") << QByteArray("5555fb050504");
}

void SimulatorFrameTest::encodes()
{
    QFETCH(QByteArray, payload);
    QFETCH(QByteArray, frame);
    QCOMPARE(hex(simulator::encodeFrame(bytes(payload))), frame);
}

void SimulatorFrameTest::decodes_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QByteArray>("payloads"); // a "!" behind those with a wrong checksum

    QTest::newRow("one frame") << QByteArray("55550002fe04") << QByteArray("0002");
    QTest::newRow("two frames") << QByteArray("55550002fe04555500000004")
                                << QByteArray("0002 0000");
    QTest::newRow("noise between")
        << QByteArray("0a0455010555550002fe04ff04") << QByteArray("0002");
    QTest::newRow("third STX") << QByteArray("5555550002fe04") << QByteArray("0002");
    QTest::newRow("greetings before")
        << QByteArray("5555555555555555550002fe04") << QByteArray("0002");
    QTest::newRow("frame begun anew")
        << QByteArray("555502015555000255550002fe04") << QByteArray("0002");
    QTest::newRow("escaped bytes") << QByteArray("555505550504050557"
                                                 "04")
                                   << QByteArray("550405!");
    QTest::newRow("escaped checksum") << QByteArray("5555fc050404") << QByteArray("fc");
    QTest::newRow("escape of a plain byte") << QByteArray("555505000502fe04") << QByteArray("0002");
    QTest::newRow("wrong checksum") << QByteArray("55550002ff04") << QByteArray("0002!");
    QTest::newRow("no payload") << QByteArray("55550004") << QByteArray("");
    QTest::newRow("nothing at all") << QByteArray("555504") << QByteArray("!");
    QTest::newRow("cut") << QByteArray("55550002fe") << QByteArray();
    QTest::newRow("too long") << QByteArray("5555") + QByteArray(2 * 1025, '1') + QByteArray("04") +
                                     QByteArray("55550002fe04")
                              << QByteArray("0002");
}

void SimulatorFrameTest::decodes()
{
    QFETCH(QByteArray, stream);
    QFETCH(QByteArray, payloads);
    simulator::FrameDecoder decoder;
    QList<QByteArray> found;
    for (const std::uint8_t byte : bytes(stream)) {
        if (const auto frame = decoder.take(byte))
            found.append(hex(frame->payload) + (frame->checksumRight ? "" : "!"));
    }
    QCOMPARE(found.join(' '), payloads);
}

void SimulatorFrameTest::keepsTheRawBytes()
{
    simulator::FrameDecoder decoder;
    std::optional<simulator::Frame> frame;
    for (const std::uint8_t byte : bytes("01555505fc050404"))
        frame = decoder.take(byte);
    QVERIFY(frame.has_value());
    QCOMPARE(hex(frame->raw), QByteArray("555505fc050404"));
    QCOMPARE(hex(frame->payload), QByteArray("fc"));
}

void SimulatorFrameTest::forgetsAFrameOnReset()
{
    simulator::FrameDecoder decoder;
    for (const std::uint8_t byte : bytes("55550002"))
        QVERIFY(!decoder.take(byte));
    decoder.reset();
    for (const std::uint8_t byte : bytes("fe04"))
        QVERIFY(!decoder.take(byte));
}

void SimulatorFrameTest::decodesWhatItEncodes()
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const Bytes payload{static_cast<std::uint8_t>(first),
                                static_cast<std::uint8_t>(second)};
            simulator::FrameDecoder decoder;
            std::optional<simulator::Frame> frame;
            for (const std::uint8_t byte : simulator::encodeFrame(payload)) {
                QVERIFY(!frame);
                frame = decoder.take(byte);
            }
            QVERIFY(frame && frame->checksumRight && frame->payload == payload);
        }
    }
}

QTEST_GUILESS_MAIN(SimulatorFrameTest)
#include "tst_simulator_frame.moc"
