// What the console's window tests share: short ways to its boxes, buttons and lists.
#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QObject>
#include <QString>
#include <QStringList>

#include "support/UiTestSupport.h"

namespace consoletest {

inline QString text(QObject* root, const QString& name) { return uitest::find<QLineEdit>(root, name)->text(); }

// A click as the button takes it from the mouse (two mouse clicks in a row would reach the
// test's window as a double click).
inline void click(QObject* root, const QString& name) { uitest::find<QAbstractButton>(root, name)->click(); }

// Picks `entry` of the list `list` as a person does.
inline void choose(QObject* root, const QString& list, const QString& entry) {
  auto* c = uitest::find<QComboBox>(root, list);
  const int i = c->findText(entry);
  if (i < 0) qFatal("entry %s not in %s", qPrintable(entry), qPrintable(list));
  c->setCurrentIndex(i);
  emit c->activated(i);
}
// The shown explanation lines of the answer of the send panel with this suffix ("XX",
// "02", ...), of its first `boxes` boxes.
inline QStringList shownLines(QObject* root, const QString& suffix, int boxes) {
  QStringList out;
  for (int i = 0; i < boxes; ++i) {
    auto* e = uitest::find<QLineEdit>(root, QStringLiteral("txtCommandCode%1AnswerExplain_%2").arg(suffix).arg(i));
    if (e->isVisible()) out << e->text();
  }
  return out;
}

// Picks a command of the console's command list.
inline void choose(QObject* root, const QString& entry) { choose(root, "cboTL42RQ_CommandList", entry); }

}  // namespace consoletest
