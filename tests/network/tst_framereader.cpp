#include "framereader.h"
#include "vddatastream.h"

#include <QtEndian>
#include <QtTest>

using vdserver::FrameReader;

namespace {
Command sample()
{
    Command command;
    command.id = 7;
    command.status = Command::StatusOk;
    command.type = 8;
    command.name = QStringLiteral("data.addObject");
    command.data = QByteArray(300, 'x');
    command.text = QStringLiteral("заметка");
    return command;
}

QByteArray lengthOf(quint32 length)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(length, bytes.data());
    return bytes;
}

// A frame around bytes that are not what its length says they are.
QByteArray framed(const QByteArray& body)
{
    return lengthOf(quint32(body.size())) + body;
}

QByteArray commandBytes(const Command& command)
{
    QByteArray bytes;
    VDDataStream out(&bytes, QIODevice::WriteOnly);
    out << command;
    return bytes;
}

bool sameCommand(const Command& a, const Command& b)
{
    return a.id == b.id && a.origin == b.origin && a.status == b.status && a.type == b.type && a.name == b.name
        && a.data == b.data && a.text == b.text;
}
}  // namespace

class TestFrameReader : public QObject
{
    Q_OBJECT

private slots:
    // However the bytes are cut on their way, the commands come out whole and in order.
    void commandsSurviveAnyCut()
    {
        Command second = sample();
        second.id = 8;
        second.data.clear();
        const QByteArray stream = FrameReader::frame(sample()) + FrameReader::frame(second);
        for (int cut = 0; cut <= stream.size(); ++cut) {
            FrameReader reader;
            QList<Command> read;
            Command command;
            for (const QByteArray& piece : {stream.left(cut), stream.mid(cut)}) {
                reader.append(piece);
                while (reader.next(command) == FrameReader::Result::Command)
                    read.append(command);
            }
            QVERIFY2(read.size() == 2, qPrintable(QString::number(cut)));
            QVERIFY(sameCommand(read.at(0), sample()));
            QVERIFY(sameCommand(read.at(1), second));
            QVERIFY(!reader.hasPartialFrame());
        }
    }

    void brokenFrames_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error");  // empty: waits for more, a truncated frame

        const QByteArray whole = FrameReader::frame(sample());
        const QByteArray body = commandBytes(sample());
        QTest::newRow("truncated frame") << whole.left(whole.size() - 1) << "";
        QTest::newRow("truncated length") << whole.left(3) << "";
        QTest::newRow("oversized") << lengthOf(FrameReader::MaxFrameSize + 1) << "more than";
        QTest::newRow("length of four gigabytes") << lengthOf(0xffffffffu) + QByteArray(64, 'a') << "more than";
        QTest::newRow("empty frame") << lengthOf(0) << "not a command";
        QTest::newRow("garbage") << framed("GET / HTTP/1.1\r\nHost: x\r\n\r\n") << "not a command";
        QTest::newRow("command cut short inside its frame") << framed(body.left(body.size() - 1)) << "not a command";
        QTest::newRow("more than a command") << framed(body + QByteArray("!")) << "more than a command";
        // A name whose length claims two billion characters in a frame of forty bytes.
        QByteArray hugeName = body.left(24) + lengthOf(0x7ffffffe) + QByteArray(12, 'a');
        QTest::newRow("count beyond the frame") << framed(hugeName) << "not a command";
    }

    // A broken frame stops the reader for good; a short one only makes it wait.
    void brokenFrames()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);

        FrameReader reader;
        reader.append(bytes);
        Command command;
        const FrameReader::Result result = reader.next(command);
        if (error.isEmpty()) {
            QCOMPARE(result, FrameReader::Result::NeedMore);
            QVERIFY(reader.hasPartialFrame());
            return;
        }
        QCOMPARE(result, FrameReader::Result::Error);
        QVERIFY2(reader.errorString().contains(error), qPrintable(reader.errorString()));
        reader.append(FrameReader::frame(sample()));
        QCOMPARE(reader.next(command), FrameReader::Result::Error);
    }
};

QTEST_GUILESS_MAIN(TestFrameReader)
#include "tst_framereader.moc"
