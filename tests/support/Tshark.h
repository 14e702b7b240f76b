// Wireshark's command-line reader as the independent judge of exported captures: the
// tests that need it skip, saying why, on a machine without it.
#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace uitest {

inline bool haveTshark() { return !QStandardPaths::findExecutable("tshark").isEmpty(); }

struct TsharkRun {
  int exitCode = -1;
  QString out;
  QString err;
};

// Runs tshark on the file with the given arguments behind "-r FILE".
inline TsharkRun tshark(const QString& file, const QStringList& args) {
  QProcess p;
  p.start("tshark", QStringList{"-r", file} + args);
  TsharkRun r;
  if (!p.waitForFinished(120000)) return r;
  r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2;
  r.out = QString::fromUtf8(p.readAllStandardOutput());
  r.err = QString::fromUtf8(p.readAllStandardError());
  return r;
}

// One line per packet of the ISO 14443 interface: "event|info|CRC status|expert messages".
inline QStringList iso14443Lines(const QString& file) {
  const TsharkRun r = tshark(file, {"-Y", "frame.interface_id == 0", "-T", "fields", "-E", "separator=|", "-e",
                                    "iso14443.event", "-e", "_ws.col.Info", "-e", "iso14443.crc.status", "-e",
                                    "_ws.expert.message"});
  if (r.exitCode != 0) return {"tshark failed: " + r.err};
  QStringList lines = r.out.split('\n');
  if (!lines.isEmpty() && lines.last().isEmpty()) lines.removeLast();
  return lines;
}

}  // namespace uitest
