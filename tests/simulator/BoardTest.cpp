// The board's fifteen operations, its USB link and the control interface, on a board of its
// own for each test.
#include <gtest/gtest.h>

#include "simulator/board.h"
#include "simulator/SimSupport.h"

using simtest::ask;
using simtest::fixture;
using simtest::Reply;

namespace {

class BoardTest : public ::testing::Test {
 protected:
  sim::Board board{fixture("field_basic.json")};

  Reply dllRev() { return ask([&](char* a) { return board.dllRevision(a); }); }
  Reply mcuRev() { return ask([&](char* a) { return board.mcuRevision(a); }); }
  Reply idn() { return ask([&](char* a) { return board.idn(a); }); }
  Reply echo() { return ask([&](char* a) { return board.echo(a); }); }
  Reply select(const char* p) { return ask([&](char* a) { return board.select(p, a); }); }
  Reply sendReceive(const char* f) { return ask([&](char* a) { return board.sendReceive(f, a); }); }
  Reply kq(const char* f) { return ask([&](char* a) { return board.kqCmd(f, a); }); }
  Reply fieldOff() { return ask([&](char* a) { return board.fieldOff(a); }); }
  Reply resetSpi() { return ask([&](char* a) { return board.resetSpi(a); }); }
  Reply irq() { return ask([&](char* a) { return board.irqPulse(a); }); }
  Reply nss() { return ask([&](char* a) { return board.nssPulse(a); }); }
  Reply polling() { return ask([&](char* a) { return board.pollingReading(a); }); }
  Reply pin() { return ask([&](char* a) { return board.interfacePinState(a); }); }

  // Every operation that needs the board, with its request where it takes one.
  std::vector<Reply> allChipOperations() {
    return {mcuRev(), idn(), echo(), select("010D"), sendReceive("260100"), kq("0155"), fieldOff(),
            resetSpi(), irq(), nss(), polling(), pin()};
  }

  std::string dump() {
    std::string out(1 << 20, '\0');
    const int n = board.dumpField(out.data(), static_cast<int>(out.size()));
    out.resize(static_cast<std::size_t>(n));
    return out;
  }
};

const Reply kUnreachable{5, ""};

TEST_F(BoardTest, GetDllRevAnswersTheDottedRevisionOfTheField) {
  EXPECT_EQ(dllRev(), (Reply{0, "0.5.0"}));
  ASSERT_EQ(board.loadField(fixture("field_wrongrev.json").c_str()), 0);
  EXPECT_EQ(dllRev(), (Reply{0, "0.2.9"}));
}

TEST_F(BoardTest, McuRevisionAnswersCountAndOneByteAnElement) {
  EXPECT_EQ(mcuRev(), (Reply{0, "0003010401"}));
  ASSERT_EQ(board.loadField(R"({"board": {"mcuRevision": [1, 10]}})"), 0);
  EXPECT_EQ(mcuRev(), (Reply{0, "0002010A"}));
  ASSERT_EQ(board.loadField(R"({"board": {"mcuRevision": []}})"), 0);
  EXPECT_EQ(mcuRev(), (Reply{0, "0000"}));
}

TEST_F(BoardTest, IdnAnswersTheChipNameAndTheCrcOfTheFrameBeforeIt) {
  EXPECT_EQ(idn(), (Reply{0, "000C4E464320544C34325251E3D4"}));
  // Length 0C: ten letters of "NFC TL42RQ" and two CRC bytes.
  const std::string frame = std::string("\x00\x0C", 2) + "NFC TL42RQ";
  const std::uint16_t crc = simtest::referenceCrc13239(frame);
  EXPECT_EQ(crc & 0xFF, 0xE3);
  EXPECT_EQ(crc >> 8, 0xD4);
}

TEST_F(BoardTest, IdnFollowsTheChipNameOfTheField) {
  ASSERT_EQ(board.loadField(R"({"board": {"chipName": "AB"}})"), 0);
  const std::string frame = std::string("\x00\x04", 2) + "AB";
  const std::uint16_t crc = simtest::referenceCrc13239(frame);
  char tail[5];
  std::snprintf(tail, sizeof tail, "%02X%02X", crc & 0xFF, crc >> 8);
  EXPECT_EQ(idn(), (Reply{0, std::string("00044142") + tail}));
}

TEST_F(BoardTest, ReferenceCrcGivesThePublishedCheckValue) {
  EXPECT_EQ(simtest::referenceCrc13239("123456789"), 0x906E);
}

TEST_F(BoardTest, EchoAnswers5500) { EXPECT_EQ(echo(), (Reply{0, "5500"})); }

TEST_F(BoardTest, ControllerOperationsAnswer0000) {
  EXPECT_EQ(fieldOff(), (Reply{0, "0000"}));
  EXPECT_EQ(resetSpi(), (Reply{0, "0000"}));
  EXPECT_EQ(irq(), (Reply{0, "0000"}));
  EXPECT_EQ(nss(), (Reply{0, "0000"}));
  EXPECT_EQ(polling(), (Reply{0, "0000"}));
}

TEST_F(BoardTest, InterfacePinStateCarriesThePinInTheSixthCharacter) {
  EXPECT_EQ(pin(), (Reply{0, "000101"}));
  ASSERT_EQ(board.loadField(R"({"board": {"interfacePin": 2}})"), 0);
  EXPECT_EQ(pin(), (Reply{0, "000102"}));
  ASSERT_EQ(board.loadField(R"({"board": {"interfacePin": 0}})"), 0);
  EXPECT_EQ(pin(), (Reply{0, "000100"}));
}

TEST_F(BoardTest, FieldOffEndsTheSelectedProtocol) {
  ASSERT_EQ(select("010D"), (Reply{0, "0000"}));
  EXPECT_EQ(fieldOff(), (Reply{0, "0000"}));
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));
}

TEST_F(BoardTest, ResetSpiRestoresPowerOnRegistersAndKeepsTheField) {
  const std::string field = dump();
  ASSERT_EQ(kq("0109036200AA"), (Reply{0, "0000"}));
  ASSERT_EQ(kq("010803620100"), (Reply{0, "0001AA"}));
  EXPECT_EQ(resetSpi(), (Reply{0, "0000"}));
  EXPECT_EQ(kq("010803620100"), (Reply{0, "000100"}));
  EXPECT_EQ(dump(), field);
}

TEST_F(BoardTest, LinkIsOpenAtPowerOnWithoutUsbConnect) {
  EXPECT_EQ(board.usbHandleCheck(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
  EXPECT_EQ(board.usbConnect(), 0);
}

TEST_F(BoardTest, UnpluggedBoardAnswers5WithAnEmptyAnswerButGivesItsRevision) {
  ASSERT_EQ(board.setBoardPresent(0), 0);
  for (const Reply& r : allChipOperations()) EXPECT_EQ(r, kUnreachable);
  EXPECT_EQ(board.usbConnect(), 5);
  EXPECT_NE(board.usbHandleCheck(), 0);
  EXPECT_EQ(dllRev(), (Reply{0, "0.5.0"}));
}

TEST_F(BoardTest, ReplugNeedsUsbConnectBeforeTheBoardAnswers) {
  ASSERT_EQ(board.setBoardPresent(0), 0);
  ASSERT_EQ(board.setBoardPresent(1), 0);
  EXPECT_NE(board.usbHandleCheck(), 0);
  EXPECT_EQ(echo(), kUnreachable);
  EXPECT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(board.usbHandleCheck(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(BoardTest, ReplugPowersTheChipAnew) {
  ASSERT_EQ(kq("0109036200AA"), (Reply{0, "0000"}));
  board.setBoardPresent(0);
  board.setBoardPresent(1);
  board.usbConnect();
  EXPECT_EQ(kq("010803620100"), (Reply{0, "000100"}));
}

TEST_F(BoardTest, FieldWithoutBoardAnswers5FromTheStart) {
  sim::Board absent{fixture("field_noboard.json")};
  EXPECT_EQ(ask([&](char* a) { return absent.echo(a); }), kUnreachable);
  EXPECT_EQ(absent.usbConnect(), 5);
  EXPECT_EQ(ask([&](char* a) { return absent.dllRevision(a); }), (Reply{0, "0.5.0"}));
  EXPECT_STREQ(absent.lastError(), "");
}

TEST_F(BoardTest, ResetIsPowerOnWithTheLinkOpenAndTheSameField) {
  const std::string field = dump();
  board.setBoardPresent(0);
  board.setBoardPresent(1);
  ASSERT_EQ(echo(), kUnreachable);
  EXPECT_EQ(board.reset(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
  EXPECT_EQ(dump(), field);
}

TEST_F(BoardTest, KqCmdDropsBlanksBeforeParsing) {
  EXPECT_EQ(kq("01 090468010130"), (Reply{0, "0000"}));
  EXPECT_EQ(kq("01 08 03 69 01 00"), (Reply{0, "000130"}));
}

TEST_F(BoardTest, KqCmdRunsChipCommandsBehindTheModeField) {
  EXPECT_EQ(kq("0155"), (Reply{0, "5500"}));
  EXPECT_EQ(kq("010100"), idn());
  EXPECT_EQ(kq("01020201"), (Reply{0, "8200"}));
  EXPECT_EQ(kq("01020201" "0D"), (Reply{0, "0000"}));
  EXPECT_EQ(kq("0109043A005804"), (Reply{0, "0000"}));
  EXPECT_EQ(kq("0109110B00241204880F1F3F3F01000505005500"), (Reply{0, "0000"}));
  EXPECT_EQ(kq("01090460011800"), (Reply{0, "0000"}));
}

TEST_F(BoardTest, KqCmdModeTwoGoesToTheController) {
  // The controller knows its ISO 15693 anticollision alone; chip commands go with mode 01.
  EXPECT_EQ(kq("020803620100"), (Reply{0, "8200"}));
  // Without ISO 15693 selected on the chip no tag is reached.
  EXPECT_EQ(kq("02A00126"), (Reply{0, "8700"}));
}

TEST_F(BoardTest, GarbageRequestsAreAnsweredWithInvalidLength) {
  for (const char* text : {"", "0", "01", "1", "03 0155", "0A0155", "01 5", "01ZZ", "010100FF", "01 08 03",
                           "XY0155", "01\t0155", "01\xff\xfe"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(kq(text), (Reply{0, "8200"}));
  }
  EXPECT_EQ(kq(nullptr), (Reply{0, "8200"}));
  EXPECT_EQ(select("0200110"), (Reply{0, "8200"}));
  EXPECT_EQ(select("02G0"), (Reply{0, "8200"}));
  EXPECT_EQ(select(""), (Reply{0, "8200"}));
  EXPECT_EQ(select(nullptr), (Reply{0, "8200"}));
  EXPECT_EQ(sendReceive("260"), (Reply{0, "8200"}));
  ASSERT_EQ(select("010D"), (Reply{0, "0000"}));
  EXPECT_EQ(sendReceive(nullptr), (Reply{0, "8200"}));
  EXPECT_EQ(sendReceive(""), (Reply{0, "8200"}));
  EXPECT_EQ(sendReceive(std::string(600, 'A').c_str()), (Reply{0, "8200"}));
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(BoardTest, NullAnswerBuffersAreLeftAlone) {
  EXPECT_EQ(board.echo(nullptr), 0);
  EXPECT_EQ(board.dllRevision(nullptr), 0);
  EXPECT_EQ(board.kqCmd("0155", nullptr), 0);
}

TEST_F(BoardTest, SelectTakesProtocolAndParametersWithoutCodeAndLength) {
  for (const char* p : {"010D", "02000180", "02000300", "03010180", "0451", "045101", "0000", "00", "1200", "1301", "1401"}) {
    SCOPED_TRACE(p);
    EXPECT_EQ(select(p), (Reply{0, "0000"}));
  }
  EXPECT_EQ(select("0501"), (Reply{0, "8300"}));
  EXPECT_EQ(select("01"), (Reply{0, "8200"}));
  EXPECT_EQ(select("020001"), (Reply{0, "8200"}));
}

TEST_F(BoardTest, SendReceiveWithoutSelectedProtocolAnswers8700) {
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));
}

TEST_F(BoardTest, SendReceiveWithNoTagOfTheProtocolInTheFieldAnswers8700) {
  ASSERT_EQ(board.loadField(R"({"tags": [{"type": "iso15693", "uid": "E0022A0012345678"}]})"), 0);
  ASSERT_EQ(select("02000180"), (Reply{0, "0000"}));
  EXPECT_EQ(sendReceive("2607"), (Reply{0, "8700"}));
  ASSERT_EQ(select("03010180"), (Reply{0, "0000"}));
  EXPECT_EQ(sendReceive("050000"), (Reply{0, "8700"}));
}

TEST_F(BoardTest, LoadFieldTakesTextAfterBlanksAsJsonAndElseAPath) {
  EXPECT_EQ(board.loadField("  \n {\"board\": {\"dllRevision\": \"0.3.1\"}}"), 0);
  EXPECT_EQ(dllRev(), (Reply{0, "0.3.1"}));
  EXPECT_EQ(board.loadField(fixture("field_wrongrev.json").c_str()), 0);
  EXPECT_EQ(dllRev(), (Reply{0, "0.2.9"}));
  EXPECT_STREQ(board.lastError(), "");
}

TEST_F(BoardTest, FailedLoadEmptiesTheFieldAndSaysWhereTheFaultIs) {
  EXPECT_EQ(board.loadField(fixture("field_broken.json").c_str()), 1);
  EXPECT_STREQ(board.lastError(),
               "field_broken.json: line 3, column 21: syntax error while parsing object key - unexpected ','; "
               "expected string literal");
  EXPECT_NE(dump().find("\"tags\": []"), std::string::npos);
  EXPECT_EQ(dllRev(), (Reply{0, "0.5.0"}));
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
  // A good load clears the error.
  EXPECT_EQ(board.loadField("{}"), 0);
  EXPECT_STREQ(board.lastError(), "");
}

TEST_F(BoardTest, MissingFieldFileLeavesAnEmptyFieldAndAWorkingBoard) {
  sim::Board lonely{"/nonexistent/dir/TL42RQ_field.json"};
  EXPECT_EQ(ask([&](char* a) { return lonely.echo(a); }), (Reply{0, "5500"}));
  EXPECT_STREQ(lonely.lastError(),
               "TL42RQ_field.json: cannot open /nonexistent/dir/TL42RQ_field.json: No such file or directory");
  EXPECT_EQ(lonely.loadField(nullptr), 1);
  EXPECT_STREQ(lonely.lastError(), "TL42RQSim_LoadField: no field text or path given");
}

TEST_F(BoardTest, DirectoryIsRefusedAsFieldFile) {
  EXPECT_EQ(board.loadField("/tmp"), 1);
  EXPECT_STREQ(board.lastError(), "tmp: /tmp is not a regular file");
}

TEST_F(BoardTest, LoadingAFieldKeepsTheChipsProtocol) {
  ASSERT_EQ(kq("0109036200AA"), (Reply{0, "0000"}));
  ASSERT_EQ(board.loadField(fixture("field_basic.json").c_str()), 0);
  EXPECT_EQ(kq("010803620100"), (Reply{0, "0001AA"}));
}

TEST_F(BoardTest, LoadingAFieldWithoutBoardUnplugsIt) {
  ASSERT_EQ(board.loadField(fixture("field_noboard.json").c_str()), 0);
  EXPECT_EQ(echo(), kUnreachable);
  ASSERT_EQ(board.loadField(fixture("field_basic.json").c_str()), 0);
  EXPECT_EQ(echo(), kUnreachable);
  EXPECT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(BoardTest, FieldFileIsReadAgainWhenItsModificationTimeChanges) {
  simtest::TempFieldFile file;
  file.write(R"({"board": {"dllRevision": "0.5.0"}, "tags": [{"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"}]})");
  ASSERT_EQ(board.loadField(file.path().c_str()), 0);
  EXPECT_EQ(dump().find("iso15693"), std::string::npos);

  file.write(R"({"board": {"dllRevision": "0.5.1"}, "tags": [{"type": "iso15693", "uid": "E002000000000001"}]})", 5);
  EXPECT_EQ(dllRev(), (Reply{0, "0.5.1"}));
  EXPECT_NE(dump().find("\"uid\": \"E002000000000001\""), std::string::npos);
  EXPECT_EQ(dump().find("felica"), std::string::npos);
}

TEST_F(BoardTest, ReloadedFieldFileUnplugsAndReplugsTheBoard) {
  simtest::TempFieldFile file;
  file.write("{}");
  ASSERT_EQ(board.loadField(file.path().c_str()), 0);
  file.write(R"({"board": {"present": false}})", 5);
  EXPECT_EQ(echo(), kUnreachable);
  file.write(R"({"board": {"present": true}})", 5);
  EXPECT_EQ(echo(), kUnreachable);  // plugged in again: the link waits for USBconnect
  EXPECT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(BoardTest, ReloadedBrokenFileEmptiesTheFieldUntilItIsMended) {
  simtest::TempFieldFile file;
  file.write(R"({"board": {"interfacePin": 2}})");
  ASSERT_EQ(board.loadField(file.path().c_str()), 0);
  ASSERT_EQ(pin(), (Reply{0, "000102"}));
  file.write("{\n  \"board\": {\"interfacePin\": 7}\n}", 5);
  EXPECT_EQ(pin(), (Reply{0, "000101"}));
  EXPECT_STREQ(board.lastError(),
               "TL42RQ_field.json: line 2, column 29: board.interfacePin: a whole number from 0 to 2 is needed, "
               "found the number 7");
  file.write(R"({"board": {"interfacePin": 0}})", 5);
  EXPECT_EQ(pin(), (Reply{0, "000100"}));
  EXPECT_STREQ(board.lastError(), "");
}

TEST_F(BoardTest, FieldGivenAsTextIsNotFollowed) {
  simtest::TempFieldFile file;
  file.write(R"({"board": {"interfacePin": 2}})");
  ASSERT_EQ(board.loadField(file.path().c_str()), 0);
  ASSERT_EQ(board.loadField(R"({"board": {"interfacePin": 0}})"), 0);
  file.write(R"({"board": {"interfacePin": 2}})", 5);
  EXPECT_EQ(pin(), (Reply{0, "000100"}));
}

TEST_F(BoardTest, DumpFieldCutsToTheBufferAndReturnsTheFullLength) {
  const std::string full = dump();
  ASSERT_GT(full.size(), 100u);
  char small[10];
  std::memset(small, 'X', sizeof small);
  EXPECT_EQ(board.dumpField(small, sizeof small), static_cast<int>(full.size()));
  EXPECT_EQ(std::string(small), full.substr(0, 9));
  char untouched = 'X';
  EXPECT_EQ(board.dumpField(&untouched, 0), static_cast<int>(full.size()));
  EXPECT_EQ(untouched, 'X');
  EXPECT_EQ(board.dumpField(nullptr, 100), static_cast<int>(full.size()));
}

TEST_F(BoardTest, DumpFieldWritesEveryTagWithItsWholeMemory) {
  const std::string text = dump();
  for (const char* type : {"iso15693", "iso14443a", "topaz", "iso14443b", "pdy", "felica"})
    EXPECT_NE(text.find(std::string("\"type\": \"") + type + "\""), std::string::npos) << type;
  // The VAS60E: 2048 blocks of 4 bytes, the file's first 20 bytes and zeros after them.
  const std::string vas = "\"memory\": \"E1400001030BD10107540265" "6E544C3432FE0000" + std::string(8192 * 2 - 40, '0') + "\"";
  EXPECT_NE(text.find(vas), std::string::npos);
}

TEST_F(BoardTest, DumpedFieldLoadsBackToTheSameDump) {
  const std::string first = dump();
  ASSERT_EQ(board.loadField(first.c_str()), 0) << board.lastError();
  EXPECT_EQ(dump(), first);
}

TEST_F(BoardTest, SetBoardPresentShowsInTheDump) {
  board.setBoardPresent(0);
  EXPECT_NE(dump().find("\"present\": false"), std::string::npos);
}

TEST_F(BoardTest, AnswersNeverExceedTheBuffer) {
  const std::string field = R"({"board": {"chipName": ")" + std::string(100, 'N') + R"("}})";
  ASSERT_EQ(board.loadField(field.c_str()), 0);
  const Reply r = idn();
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.answer.size(), 4u + 2 * 102);
  EXPECT_EQ(r.answer.substr(0, 4), "0066");
}

}  // namespace
