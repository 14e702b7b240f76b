// The memory page view on the ISO 15693 panel: rows after a read, the scroll keys, the
// clipboard, the page size list, the write grid and its fill; and the view alone in the
// variants of the two other memory panels.
#include <QClipboard>
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
// Every read answers the block address as its four bytes.
void addressTag(FakeDriver& d) {
  d.setHandler([](Op op, const std::string& frame) -> FakeDriver::Reply {
    if (op == Op::Echo) return {0, "5500"};
    if (op != Op::SendReceive) return {0, "0000"};
    const std::string b = frame.substr(4, 2);
    return {0, tagAnswer("00" + b + b + b + b)};
  });
}
QString row(int address, int bufferNumber = -1) {
  const QString a = QString("%1").arg(address, 2, 16, QLatin1Char('0')).toUpper();
  (void)bufferNumber;
  return a + "   " + a + " " + a + " " + a + " " + a + " ";
}
}  // namespace

class Iso15693PageViewTest : public QObject {
  Q_OBJECT
 private slots:
  void sixteenBlocksShowAllAndDownAtTheLastRowDoesNothing() {
    Fixture f;
    addressTag(f.driver);
    f.open();
    f.range("00", "0F");
    f.click("cmdReadUser");
    auto* list = f.w<QListWidget>("lstReadView");
    QVERIFY(list->isVisible());
    QCOMPARE(list->count(), 16);
    QCOMPARE(list->item(0)->text(), row(0));
    QCOMPARE(list->item(15)->text(), row(0x0F));
    list->setCurrentRow(15);
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(list->item(0)->text(), row(0));
    QCOMPARE(f.panel->pageView()->firstShownRow(), 1L);
    QCOMPARE(list->currentRow(), 15);
  }

  void seventeenBlocksShowTheLastSixteenAndHomeTheFirst() {
    Fixture f;
    addressTag(f.driver);
    f.open();
    f.range("00", "10");
    f.click("cmdReadUser");
    auto* list = f.w<QListWidget>("lstReadView");
    QCOMPARE(f.panel->pageView()->firstShownRow(), 2L);
    QCOMPARE(list->count(), 16);
    QCOMPARE(list->item(0)->text(), row(1));
    QCOMPARE(list->item(15)->text(), row(0x10));
    QTest::keyClick(list, Qt::Key_Home);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 1L);
    QCOMPARE(list->item(0)->text(), row(0));
    QCOMPARE(list->item(15)->text(), row(0x0F));
    list->setCurrentRow(15);
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 2L);
    QCOMPARE(list->item(15)->text(), row(0x10));
    QCOMPARE(list->currentRow(), 15);
    list->setCurrentRow(0);
    QTest::keyClick(list, Qt::Key_Up);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 1L);
    QCOMPARE(list->item(0)->text(), row(0));
    QCOMPARE(list->currentRow(), 0);
  }

  void pageDownInFortyRowsGivesSeventeenThenTwentyFive() {
    Fixture f;
    addressTag(f.driver);
    f.open();
    f.range("00", "27");
    f.click("cmdReadUser");
    auto* list = f.w<QListWidget>("lstReadView");
    QTest::keyClick(list, Qt::Key_Home);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 1L);
    QTest::keyClick(list, Qt::Key_PageDown);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 17L);
    QCOMPARE(list->item(0)->text(), row(0x10));
    QTest::keyClick(list, Qt::Key_PageDown);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 25L);
    QCOMPARE(list->item(0)->text(), row(0x18));
    QCOMPARE(list->item(15)->text(), row(0x27));
    QTest::keyClick(list, Qt::Key_PageDown);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 25L);
    QTest::keyClick(list, Qt::Key_PageUp);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 9L);
    QTest::keyClick(list, Qt::Key_End);
    QCOMPARE(f.panel->pageView()->firstShownRow(), 25L);
  }

  void rangeThroughTheEndShowsWrappedAddresses() {
    Fixture f;
    addressTag(f.driver);
    f.open();
    f.range("3E", "01");
    f.click("cmdReadUser");
    // The walk sends 40 and 41; the view shows the masked addresses.
    QCOMPARE(sent(f.driver), (std::vector<std::string>{"02203E", "02203F", "022040", "022041"}));
    QCOMPARE(f.view(), (QStringList{row(0x3E), row(0x3F), "00   40 40 40 40 ", "01   41 41 41 41 "}));
  }

  void doubleClickCopiesTheRowWithItsAddress() {
    Fixture f;
    addressTag(f.driver);
    f.open();
    f.range("04", "06");
    f.click("cmdReadUser");
    auto* list = f.w<QListWidget>("lstReadView");
    const QRect r = list->visualItemRect(list->item(1));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, r.center());
    QCOMPARE(QGuiApplication::clipboard()->text(), row(5));
  }

  void pageSizeListHoldsOneToThePageSize() {
    Fixture f;
    f.open();
    auto* cbo = f.w<QComboBox>("cboPageSize");
    QCOMPARE(cbo->count(), 4);
    QCOMPARE(cbo->itemText(0), QString("1"));
    QCOMPARE(cbo->currentText(), QString("4"));
    QCOMPARE(cbo->toolTip(), QString("In page mode, specify here the number of byte to write inside the page"));
    QCOMPARE(f.w<QLabel>("lblNbData")->text(), QString("Page Size"));
  }

  void pageSizeClickHidesGridAndList() {
    Fixture f;
    f.open();
    f.range("00", "00");
    f.click("cmdWriteSingleBlock");
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("1");
    f.panel->pageView()->cboPageSize_Click();
    QVERIFY(!f.w("fraPageWrite")->isVisible());
    QVERIFY(!f.w("lstReadView")->isVisible());
    QCOMPARE(f.w<MaskedEdit>("mskFillPage")->maskedText(), std::string("__"));
  }

  void fillWithABInAGridOfThreeBytes() {
    Fixture f;
    f.open();
    f.range("00", "00");
    f.w<QComboBox>("cboPageSize")->setCurrentIndex(2);
    f.click("cmdWriteSingleBlock");
    auto* box = f.w<MaskedEdit>("PWData_0");
    QCOMPARE(box->maskedText(), std::string("00 00 00 "));
    QCOMPARE(box->pattern(), std::string(">AA AA AA "));
    QVERIFY(f.w("PWData_1")->isHidden());
    QVERIFY(!f.w("PWData_1")->isEnabled());
    QCOMPARE(f.w<MaskedEdit>("mskFillPage")->maskedText(), std::string("__"));
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("AB");
    QCOMPARE(box->maskedText(), std::string("AB AB AB "));
    QVERIFY(f.dialogs.messages.empty());
  }

  void typedFillRunsTheCheckAtEveryChange() {
    Fixture f;
    f.open();
    f.range("00", "00");
    f.click("cmdWriteSingleBlock");
    auto* fill = f.w<MaskedEdit>("mskFillPage");
    fill->setFocus();
    fill->setCursorPosition(0);
    QTest::keyClicks(fill, "7e");
    // The first digit alone leaves "7_", which the check refuses; the second fills.
    QCOMPARE(f.dialogs.messages.size(), std::size_t(1));
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("7E 7E 7E 7E "));
  }

  void afiModeGivesAOneByteGridWhateverThePageSize() {
    Fixture f;
    f.open();
    f.range("00", "00");
    QCOMPARE(f.w<QComboBox>("cboPageSize")->currentText(), QString("4"));
    f.click("cmdWriteAFI");
    QCOMPARE(glob::state().writeMode, 1);
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("5A");
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("5A "));
  }

  void writeButtonIsOfferedOnTheUserModeTabOnly() {
    Fixture f;
    f.open();
    QCOMPARE(glob::state().currentTab, 1);
    f.panel->pageView()->setPageGrid(4);
    QVERIFY(f.w("cmdWriteUser")->isHidden());
    QVERIFY(!f.w("cmdCancelWriteTest")->isHidden());
    QVERIFY(!f.w("mskFillPage")->isHidden());
    QVERIFY(!f.w("lblAutoFill")->isHidden());
    QVERIFY(f.w("cmdWriteTest")->isHidden());
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    f.panel->pageView()->setPageGrid(4);
    QVERIFY(!f.w("cmdWriteUser")->isHidden());
  }

  void gridOfSixBytesHasAFullBoxAndALastOne() {
    Fixture f;
    f.open();
    f.panel->pageView()->setPageGrid(6);
    QCOMPARE(f.w<MaskedEdit>("PWData_0")->maskedText(), std::string("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "));
    QCOMPARE(f.w<MaskedEdit>("PWData_1")->maskedText(), std::string("00 00 "));
    QVERIFY(f.w("PWData_2")->isHidden());
    QCOMPARE(f.panel->pageView()->gridData(6), std::string("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "));
  }

  void theOtherPanelsVariants() {
    glob::state() = glob::GlobVariables();
    chooseProduct("ISO14443-A");
    MemoryPageView a(pageview::Variant::Iso14443A, {});
    QVERIFY(!a.findChild<QComboBox*>("cboPageSize"));
    auto* pageSize = uitest::find<QLineEdit>(&a, "txtPageSize");
    QCOMPARE(pageSize->text(), QString("4"));
    pageSize->setText("16");
    a.setPageGrid(16);
    QCOMPARE(uitest::find<MaskedEdit>(&a, "PWData_0")->pattern(), std::string(">AA AA AA AA "));
    QCOMPARE(uitest::find<MaskedEdit>(&a, "PWData_0")->maskedText(), std::string("00 00 00 00 "));
    a.mskFillPage()->setMaskedText("11");
    QCOMPARE(uitest::find<MaskedEdit>(&a, "PWData_3")->maskedText(), std::string("11 11 11 11 "));

    MemoryPageView b(pageview::Variant::Iso14443B, {});
    QVERIFY(!b.findChild<QLineEdit*>("txtPageSize"));
    b.setPageGrid(4);
    b.mskFillPage()->setMaskedText("22");
    QCOMPARE(uitest::find<MaskedEdit>(&b, "PWData_0")->maskedText(), std::string("22 22 22 22 "));

    // The list is fed and scrolled alike.
    memoryBuffer().Clear();
    for (int i = 0; i < 20; ++i) memoryBuffer().AddItem("r" + std::to_string(i));
    b.showReadRows(20, 0);
    QCOMPARE(b.firstShownRow(), 5L);
    QCOMPARE(b.lstReadView()->item(0)->text(), QString("04   r4"));
    b.lstReadView_KeyDown(0x24);
    QCOMPARE(b.lstReadView()->item(0)->text(), QString("00   r0"));
  }
};

QTEST_MAIN(Iso15693PageViewTest)
#include "Iso15693PageViewTest.moc"
