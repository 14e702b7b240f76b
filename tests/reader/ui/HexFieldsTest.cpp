// The typed fields: key filters with their beep, and the colour of free frame fields.
#include <QApplication>
#include <QClipboard>
#include <QtTest>

#include "reader/ui/HexFields.h"
#include "shell/ui/Dialogs.h"

namespace {
bool isRed(const QLineEdit& e) { return e.palette().color(QPalette::Text) == QColor(255, 0, 0); }
}  // namespace

class HexFieldsTest : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;

 private slots:
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
  }
  void cleanup() { setDialogs(nullptr); }

  void hexFieldBeepsOnALetterGAndKeepsItsText() {
    HexLineEdit field("txtUserAddress_0");
    field.setText("1a");
    field.setCursorPosition(2);
    QTest::keyClicks(&field, "g");
    QCOMPARE(field.text(), QString("1a"));
    QCOMPARE(dialogs_.beeps, 1);
    QTest::keyClicks(&field, "F");
    QCOMPARE(field.text(), QString("1aF"));
    QTest::keyClick(&field, Qt::Key_Backspace);
    QCOMPARE(field.text(), QString("1a"));
    QCOMPARE(dialogs_.beeps, 1);
  }

  void binaryFieldTakesOnlyZeroAndOne() {
    HexLineEdit field("txtBitsByte0", reader::FieldKind::Binary);
    QTest::keyClicks(&field, "1021");
    QCOMPARE(field.text(), QString("101"));
    QCOMPARE(dialogs_.beeps, 1);
  }

  void decimalFieldTakesDigits() {
    HexLineEdit field("txtLOOPnumber", reader::FieldKind::Decimal);
    QTest::keyClicks(&field, "1A2");
    QCOMPARE(field.text(), QString("12"));
    QCOMPARE(dialogs_.beeps, 1);
  }

  void frameFieldIsRedUntilItHoldsWholeBytes() {
    FrameLineEdit field("txt_ISO15693_AnyFrame");
    QVERIFY(isRed(field));
    QTest::keyClicks(&field, "0");
    QVERIFY(isRed(field));
    QTest::keyClicks(&field, "2");
    QVERIFY(!isRed(field));
    QVERIFY(field.showsNormalColour());
    QTest::keyClicks(&field, "6");
    QVERIFY(isRed(field));
  }

  void pastedTextSkipsTheFilterButNotTheColour() {
    FrameLineEdit field("txt_ISO14443A_AnyFrame");
    QApplication::clipboard()->setText("26 1");
    field.paste();
    QCOMPARE(field.text(), QString("26 1"));
    QCOMPARE(dialogs_.beeps, 0);
    QVERIFY(!isRed(field));
    field.setText("261");
    QVERIFY(isRed(field));
  }
};

QTEST_MAIN(HexFieldsTest)
#include "HexFieldsTest.moc"
