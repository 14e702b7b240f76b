// The console against the real simulated board with the fixture field: every command of
// the list, and those the list does not offer, sent through the window and explained.
#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QtTest>

#include "console/ui/frmTL42RQ_UserInterface.h"
#include "reader/Drivers.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

#include "ConsoleUiSupport.h"

using namespace consoletest;

namespace {

void type(QObject* root, const QString& name, const QString& keys) {
  auto* e = uitest::find<QLineEdit>(root, name);
  e->selectAll();
  QTest::keyClick(e, Qt::Key_Backspace);
  QTest::keyClicks(e, keys);
}

// The ISO/IEC 13239 CRC, bit by bit as the standard writes it, low byte first.
QString crc13239(const QByteArray& bytes) {
  std::uint16_t crc = 0xFFFF;
  for (unsigned char byte : bytes)
    for (int bit = 0; bit < 8; ++bit) {
      const bool mix = ((crc ^ (byte >> bit)) & 1) != 0;
      crc >>= 1;
      if (mix) crc ^= 0x8408;
    }
  crc = static_cast<std::uint16_t>(~crc);
  return QStringLiteral("%1 %2").arg(crc & 0xFF, 2, 16, QLatin1Char('0')).arg(crc >> 8, 2, 16, QLatin1Char('0')).toUpper();
}

}  // namespace

class ConsoleOnBoardTest : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;

 private slots:
  void init() {
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
  }
  void cleanup() { setDialogs(nullptr); }

  void everyCommandAgainstTheSimulatedBoard() {
    uitest::SimulatedBoard board;
    QVERIFY(board.loaded());
    QCOMPARE(board.loadField(uitest::fixture("field_basic.json")), 0);
    uitest::FixedTime time;
    frmTL42RQ_UserInterface p;
    p.resize(1300, 900);
    p.show();

    // IDN: the chip's name in line 2.
    choose(&p, " 01 : IDN ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXRequest"), QString(" 0100"));
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"00 : Result code = OK", "0C : Lenght of Data (12)", "NFC TL42RQ"}));
    QVERIFY(text(&p, "txtCommandCodeXXAnswer").startsWith("000C4E464320544C34325251"));

    // Protocol Select ISO 15693.
    choose(&p, " 02 : Protocol Select ");
    click(&p, "OptProtocolCode_1");
    click(&p, "cmdSendCommandCode02");
    QCOMPARE(text(&p, "txtCommandCode02Answer"), QString("0000"));
    QCOMPARE(shownLines(&p, "02", 3), (QStringList{"00 : Result code = OK", "00 : Lenght of Data (0)", ""}));

    // Send Receive of an inventory: the tag of the fixture answers its UID.
    choose(&p, " 04 : SendRecv ");
    type(&p, "txtCodeXXFrameData", "260100");
    QCOMPARE(text(&p, "txtCodeXXFrame_1"), QString("03"));
    click(&p, "cmdSendCommandCodeXX");
    const QString crc = crc13239(QByteArray::fromHex("000078563412002A02E0"));
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"80 : Result code = OK", "0D : Lenght of Data (13)",
                          "00 00 78 56 34 12 00 2A 02 E0 : Tag answer", crc + " : CRC", "00 : Protocol result"}));

    // Write ARC_B, then read register 69 back.
    choose(&p, " 09 : WrReg ");
    click(&p, "optCmd09WriteRegister_1");
    type(&p, "txtCodeXXFrameData", "51");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXRequest"), QString(" 090468010151"));
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"00 : Result code = Data was successfully sent", "00 : Lenght of Data (0)"}));
    choose(&p, " 08 : RdReg ");
    click(&p, "optCmd08ReadRegister_1");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer"), QString("000151"));
    QCOMPARE(shownLines(&p, "XX", 5), (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "Data : 51 "}));

    // Idle example 3 comes back by time-out; register 62 holds the reason.
    choose(&p, " 07 : Idle ");
    click(&p, "optIDLEframe_3");
    click(&p, "cmdSendCommandCode07");
    QCOMPARE(text(&p, "txtCommandCode07Answer"), QString("000101"));
    QCOMPARE(shownLines(&p, "07", 2),
             (QStringList{"00 : Result code = Device exits from Idle mode", "01 : Lenght of Data (1)"}));
    choose(&p, " 08 : RdReg ");
    click(&p, "optCmd08ReadRegister_0");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5), (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "Data : 01 "}));

    // The baud rate's pseudo-response, and the echo with no lines.
    choose(&p, " 0A : BaudRate ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5), (QStringList{"55 : Pseudo-response of 0x55", "00 : Lenght of Data (0)"}));
    choose(&p, " 55 : Echo-code ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer"), QString("5500"));
    QCOMPARE(shownLines(&p, "XX", 5), QStringList());

    // The commands the list does not offer.
    p.selectCommandEntry(" 03 : Poll Field ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "00 : Field is not detected"}));
    p.selectCommandEntry(" 05 : Listen ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"83 : Error code = Invalid protocol or Listen is not supported by protocol",
                          "00 : Lenght of Data (0)"}));
    p.selectCommandEntry(" 06 : Send ");
    type(&p, "txtCodeXXFrameData", "AA");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"83 : Error code = Invalid protocol previously selected by Select Protocol command",
                          "00 : Lenght of Data (0)"}));
    p.selectCommandEntry(" 0B : SubFreqRes ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "Frequency reult : 00 "}));
    p.selectCommandEntry(" 0E : TestMode ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5), (QStringList{"00 : Result code = Confirmation", "00 : Lenght of Data (0)"}));
    p.selectCommandEntry(" 0F : SleepMode ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXRequest"), QString(" 0F0100"));
    QCOMPARE(shownLines(&p, "XX", 5), (QStringList{"00 : Result code = Confirmation", "00 : Lenght of Data (0)"}));
    p.selectCommandEntry(frmTL42RQ_UserInterface::entryOf("0D"));
    click(&p, "OptCommad0D_1");
    click(&p, "cmdSendCommandCode0D");
    QCOMPARE(text(&p, "txtCommandCode0DRequest"), QString(" 0D0700000000000000"));
    QCOMPARE(shownLines(&p, "0D", 3),
             (QStringList{"00 : Result code = Device is successfully Activated / Disactivated",
                          "00 : Lenght of Data (0)", ""}));

    // Card mode. The card options put 05 into box 2, which the chip refuses; with the
    // protocol code typed by hand the chip listens, and finds no reader's field.
    choose(&p, " 02 : Protocol Select ");
    click(&p, "OptProtocolCode_5");
    click(&p, "cmdSendCommandCode02");
    QCOMPARE(text(&p, "txtCommandCode02Request"), QString(" 02020500"));
    QCOMPARE(text(&p, "txtCommandCode02Answer"), QString("8300"));
    QCOMPARE(shownLines(&p, "02", 3), QStringList());
    type(&p, "txtCode02Frame_2", "12");
    click(&p, "cmdSendCommandCode02");
    QCOMPARE(text(&p, "txtCommandCode02Answer"), QString("0000"));
    p.selectCommandEntry(" 05 : Listen ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"83 : Error code = No field. Command cannot be executed because there are no field",
                          "00 : Lenght of Data (0)"}));

    // The direct buttons.
    click(&p, "cmdEcho");
    QCOMPARE(text(&p, "txtEchoAnswer"), QString("5500"));
    click(&p, "cmdSendIRQPulse");
    QCOMPARE(text(&p, "txtSendIRQPulseAnswer"), QString("0000"));
    click(&p, "cmdNegativePulseOn_SPI_NSS");
    QCOMPARE(text(&p, "txtNegPulse_SPI_NSS_Answer"), QString("0000"));
    QVERIFY(p.log().text().ends_with("\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_NSS_PULSE\r\n\t\t\t<<< 0000"));
  }

  void unpluggedBoardGivesTheTransactionErrors() {
    uitest::SimulatedBoard board;
    QVERIFY(board.loaded());
    QCOMPARE(board.loadField(uitest::fixture("field_basic.json")), 0);
    frmTL42RQ_UserInterface p;
    p.show();
    QCOMPARE(board.setBoardPresent(false), 0);
    choose(&p, " 01 : IDN ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer"), QString("Transaction error : Check your reader connections"));
    choose(&p, " 07 : Idle ");
    click(&p, "cmdSendCommandCode07");
    QCOMPARE(text(&p, "txtCommandCode07Answer"), QString("Transaction error : 5 ()"));
    QCOMPARE(board.setBoardPresent(true), 0);
    click(&p, "cmdSendCommandCode07");
    QCOMPARE(text(&p, "txtCommandCode07Answer"), QString("000108"));
  }
};

QTEST_MAIN(ConsoleOnBoardTest)
#include "ConsoleOnBoardTest.moc"
