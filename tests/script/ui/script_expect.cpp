// tl42rq-script as a regression test and a capture source: --expect against a saved log
// (same, one answer changed, missing file), --pcapng read back by Wireshark, and both
// together with --loop, on the repository's example script and the shipped field.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "support/Tshark.h"

namespace {

const QString kExample = QStringLiteral(TL42RQ_SOURCE_DIR "/data/examples/bench_check.txt");
const QString kExampleLog = QStringLiteral(TL42RQ_SOURCE_DIR "/data/examples/bench_check.log");
const QString kShippedField = QStringLiteral(TL42RQ_SOURCE_DIR "/data/TL42RQ_field.json");

struct Run {
  int exitCode = -1;
  QByteArray out;
  QByteArray err;
};

Run runner(const QStringList& args) {
  QProcess proc;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("TL42RQ_FIELD", kShippedField);
  env.insert("TL42RQ_DRIVER", SIM_LIBRARY);
  env.remove("TL42RQ_TRACE_TIME");
  proc.setProcessEnvironment(env);
  proc.start(QCoreApplication::applicationDirPath() + "/tl42rq-script", args);
  Run r;
  if (!proc.waitForFinished(120000)) return r;
  r.exitCode = proc.exitStatus() == QProcess::NormalExit ? proc.exitCode() : -2;
  r.out = proc.readAllStandardOutput();
  r.err = proc.readAllStandardError();
  return r;
}

QByteArray readAll(const QString& path) {
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly)) qFatal("cannot read %s", qPrintable(path));
  return f.readAll();
}

}  // namespace

class ScriptExpect : public QObject {
  Q_OBJECT
  QTemporaryDir dir_;

  QString write(const QString& name, const QByteArray& bytes) {
    const QString path = dir_.filePath(name);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) qFatal("cannot write %s", qPrintable(path));
    f.write(bytes);
    return path;
  }

 private slots:
  void initTestCase() { QVERIFY(QFileInfo::exists(QCoreApplication::applicationDirPath() + "/tl42rq-script")); }

  void theSameLogAtAnotherTimeAgrees() {
    // The saved log carries other stamps than this run's clock gives.
    QVERIFY(readAll(kExampleLog).contains("11-23-2026 20:30:00\t>>> TL42RQDLL_ECHO"));
    const Run r = runner({"--expect", kExampleLog, kExample});
    QCOMPARE(r.err, QByteArray());
    QCOMPARE(r.out, QByteArray());
    QCOMPARE(r.exitCode, 0);
  }

  void oneChangedAnswerDiffersWithItsDiff() {
    QByteArray log = readAll(kExampleLog);
    const QByteArray attrib = "\t\t\t<<< 80040078F000";
    QCOMPARE(log.count(attrib), 1);
    log.replace(attrib, "\t\t\t<<< 80040078F001");
    const QString changed = write("changed.log", log);
    const Run r = runner({"--expect", changed, kExample});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.err, QByteArray());
    const QByteArray lines = r.out;
    QVERIFY2(lines.startsWith("--- " + changed.toLocal8Bit() + "\n+++ " + kExample.toLocal8Bit() + " (this run)\n"),
             lines.constData());
    // The hunk: three lines of context, the saved answer, this run's answer.
    QVERIFY2(lines.contains("\n-\t\t\t<<< 80040078F001\n+\t\t\t<<< 80040078F000\n"), lines.constData());
    QVERIFY2(lines.contains("\n@@ -48,6 +48,6 @@\n"), lines.constData());
    // Two names, one hunk head, three lines before, the pair, two lines to the end.
    QCOMPARE(lines.count('\n'), 3 + 3 + 2 + 2);
  }

  void aMissingLogOrScriptIsABadArgument() {
    const Run noLog = runner({"--expect", dir_.filePath("no-such.log"), kExample});
    QCOMPARE(noLog.exitCode, 2);
    QVERIFY(noLog.out.isEmpty());
    QVERIFY(noLog.err.startsWith("tl42rq-script: cannot read " + dir_.filePath("no-such.log").toLocal8Bit()));
    const Run noScript = runner({"--expect", kExampleLog, dir_.filePath("no-such.txt")});
    QCOMPARE(noScript.exitCode, 2);
    const Run noValue = runner({kExample, "--expect"});
    QCOMPARE(noValue.exitCode, 2);
    QCOMPARE(noValue.err, QByteArray("tl42rq-script: --expect needs a file name (try --help)\n"));
    const Run unwritable = runner({"--pcapng", dir_.filePath("no-dir/x.pcapng"), kExample});
    QCOMPARE(unwritable.exitCode, 2);
    QVERIFY(unwritable.out.isEmpty());
  }

  void loopAndPcapngCombineWithExpect() {
    // Two passes: the saved log twice over, and a capture of both. A second pass sees the
    // lines the first one cleaned, so the script's two blank lines log only in the first.
    QByteArray second = readAll(kExampleLog);
    const QByteArray blankAfterIdn = "<<< 000C4E464320544C34325251E3D4\r\n\r\n";
    const QByteArray blankAfterFieldOff = "TL42RQDLL_FIELDOFF\r\n\t\t\t<<< 0000\r\n\r\n";
    QCOMPARE(second.count(blankAfterIdn), 1);
    QCOMPARE(second.count(blankAfterFieldOff), 1);
    second.replace(blankAfterIdn, "<<< 000C4E464320544C34325251E3D4\r\n");
    second.replace(blankAfterFieldOff, "TL42RQDLL_FIELDOFF\r\n\t\t\t<<< 0000\r\n");
    const QString twice = write("twice.log", readAll(kExampleLog) + second);
    const QString capture = dir_.filePath("twice.pcapng");
    const Run r = runner({"--loop", "2", "--pcapng", capture, "--expect", twice, kExample});
    QCOMPARE(r.out, QByteArray());
    QCOMPARE(r.exitCode, 0);
    QVERIFY(QFile::exists(capture));
    // One pass's log against two passes differs.
    QCOMPARE(runner({"--loop", "2", "--expect", kExampleLog, kExample}).exitCode, 1);
  }

  void theRunsCaptureIsDecodedByWireshark() {
    if (!uitest::haveTshark()) QSKIP("tshark is not installed: the Wireshark checks need it");
    const QString capture = dir_.filePath("bench.pcapng");
    const Run r = runner({"--pcapng", capture, kExample});
    QCOMPARE(r.exitCode, 0);
    // Without --expect the log still goes to standard output.
    QVERIFY(r.out.contains("<<< 80040078F000"));
    const QStringList expected{
        "0xfc|Field on||",
        "0xfe|REQA||7 valid bits in the last byte",
        // The Topaz of the shipped field answers REQA too: ATQA 44 00 and 0C 00 collide.
        "0xff|ATQA||chip reports collision",
        "0xfe|Anticollision||",
        "0xff|UID||",
        "0xfa|Select||",
        "0xff|SAK|1|",
        "0xfe|Anticollision||",
        "0xff|UID||",
        "0xfa|Select||",
        "0xff|SAK|1|",
        "0xfa|||Unknown ISO1443 command",
        "0xff|I-block, No chaining, Block number 1|2|",
        "0xfd|Field off||",
        "0xfc|Field on||",
        "0xfa|REQB||",
        "0xff|ATQB|1|",
        "0xfa|Attrib||",
        "0xff|Response to Attrib|1|",
        "0xfd|Field off||",
    };
    QCOMPARE(uitest::iso14443Lines(capture), expected);
    const uitest::TsharkRun bad =
        uitest::tshark(capture, {"-Y", "_ws.malformed || iso14443.crc.wrong || iso14443.crc.status == 0"});
    QCOMPARE(bad.out, QString());
    // The chip-only calls on the second interface: echo, identification, the register
    // write; each a call and a return, with the operation and the status in the header.
    const uitest::TsharkRun other =
        uitest::tshark(capture, {"-Y", "frame.interface_id == 1", "-T", "fields", "-e", "data.data"});
    QCOMPARE(other.out, QString("00f0000500000000\n"
                                "00f10005000000025500\n"
                                "00f0000400000000\n"
                                "00f100040000000e000c4e464320544c34325251e3d4\n"
                                "00f00008000000070109043a005804\n"
                                "00f10008000000020000\n"));
    // Time stamps strictly increasing.
    const uitest::TsharkRun times = uitest::tshark(capture, {"-T", "fields", "-e", "frame.time_epoch"});
    QStringList stamps = times.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(stamps.size(), 26);
    for (int i = 1; i < stamps.size(); ++i) QVERIFY(stamps[i].toDouble() > stamps[i - 1].toDouble());
  }
};

QTEST_MAIN(ScriptExpect)
#include "script_expect.moc"
