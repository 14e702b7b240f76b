// What the window tests of the serial driver share: the chip emulator started as a
// separate process on a pseudo-terminal (behind a symbolic link that survives its hang-ups),
// the field it serves, its misbehaviour switches, and the serial library loaded as the
// program loads a driver.
#pragma once

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "reader/Drivers.h"
#include "support/UiTestSupport.h"

namespace serialtest {

// Short: the tests' silent chip costs this per exchange.
inline constexpr const char* kTimeoutMs = "300";

class EmulatedChipProcess {
 public:
  // Starts the emulator on the fixture's field; fails the test program when it cannot.
  explicit EmulatedChipProcess(const std::string& fieldFixture) {
    if (!dir_.isValid()) qFatal("no temporary directory");
    setField(readFixture(fieldFixture));
    process_.setProgram(QStringLiteral(SERIAL_EMULATOR));
    process_.setArguments({"--field", fieldPath(), "--link", dir_.filePath("chip")});
    process_.setProcessChannelMode(QProcess::SeparateChannels);
    process_.start();
    if (!process_.waitForStarted(5000)) qFatal("emulator did not start");
    port_ = nextLine(5000);
    if (port_.isEmpty()) qFatal("emulator printed no device path");
  }
  ~EmulatedChipProcess() {
    process_.write("quit\n");
    if (!process_.waitForFinished(2000)) process_.kill();
    process_.waitForFinished(2000);
  }

  QString port() const { return port_; }

  // Replaces the field; the emulator reads the new file before its next command.
  void setField(const std::string& json) {
    const QString next = dir_.filePath("field.next");
    QFile f(next);
    if (!f.open(QIODevice::WriteOnly)) qFatal("cannot write the field");
    f.write(json.data(), static_cast<qint64>(json.size()));
    f.close();
    QFile::remove(fieldPath());
    QFile::rename(next, fieldPath());
  }

  // Sends one misbehaviour line and waits until the emulator says it is in force.
  bool control(const QString& line) {
    process_.write((line + "\n").toLatin1());
    return nextLine(3000) == "ok " + line;
  }

  // The next line the emulator prints, or empty after `ms` milliseconds.
  QString nextLine(int ms) {
    QElapsedTimer clock;
    clock.start();
    while (!process_.canReadLine()) {
      const qint64 left = ms - clock.elapsed();
      if (left <= 0 || !process_.waitForReadyRead(static_cast<int>(left))) break;
    }
    return process_.canReadLine() ? QString::fromLatin1(process_.readLine()).trimmed() : QString();
  }

  static std::string readFixture(const std::string& name) {
    QFile f(QString::fromStdString(uitest::fixture(name)));
    if (!f.open(QIODevice::ReadOnly)) qFatal("fixture %s missing", name.c_str());
    return f.readAll().toStdString();
  }

 private:
  QString fieldPath() const { return dir_.filePath("field.json"); }
  QTemporaryDir dir_;
  QProcess process_;
  QString port_;
};

// The serial library on the emulator's line, chosen as the program chooses its driver:
// TL42RQ_DRIVER names it. The library reads its settings at its first call.
inline std::unique_ptr<reader::ReaderDriver> serialDriver(const QString& port) {
  qputenv("TL42RQ_SERIAL_PORT", port.toLocal8Bit());
  qputenv("TL42RQ_SERIAL_TIMEOUT_MS", kTimeoutMs);
  qputenv("TL42RQ_DRIVER", SERIAL_LIBRARY);
  return reader::LibraryDriver::load(reader::defaultLibraryPath(QDir::tempPath().toStdString()));
}

// Forwards to a driver and keeps every call with its status and answer, so that a test can
// state exactly what an exchange, its reconnect and its repeat did.
class RecordingDriver final : public reader::ReaderDriver {
 public:
  struct Call {
    reader::Op op;
    std::int32_t status;
    std::string answer;
    bool operator==(const Call&) const = default;
  };
  explicit RecordingDriver(reader::ReaderDriver& inner) : inner_(inner) {}
  std::int32_t call(reader::Op op, const char* request, char* answer) override {
    const std::int32_t status = inner_.call(op, request, answer);
    calls_.push_back({op, status, answer ? std::string(answer) : std::string()});
    return status;
  }
  std::string description() const override { return inner_.description(); }
  // The calls since the last take, and forgets them.
  std::vector<Call> take() { return std::exchange(calls_, {}); }

 private:
  reader::ReaderDriver& inner_;
  std::vector<Call> calls_;
};

}  // namespace serialtest
