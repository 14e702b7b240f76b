// Reading the field file: defaults, every kind of tag, and exact error texts with the line
// and column of the fault.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "simulator/fieldfile.h"
#include "simulator/SimSupport.h"

namespace {

using simtest::fixture;

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The error text of a field that must be refused.
std::string refusal(std::string_view text) {
  sim::ParseOutcome outcome = sim::parseField(text, "f.json");
  EXPECT_TRUE(outcome.contents.tags.empty());
  return outcome.error;
}

TEST(FieldFile, EmptyObjectGivesTheBoardDefaults) {
  const sim::ParseOutcome out = sim::parseField("{}", "f.json");
  EXPECT_EQ(out.error, "");
  EXPECT_TRUE(out.contents.board.present);
  EXPECT_EQ(out.contents.board.dllRevision, "0.5.0");
  EXPECT_EQ(out.contents.board.mcuRevision, (hex::Bytes{1, 4, 1}));
  EXPECT_EQ(out.contents.board.chipName, "NFC TL42RQ");
  EXPECT_EQ(out.contents.board.interfacePin, 1);
  EXPECT_EQ(out.contents.antenna.detectLevel, 31);
  EXPECT_TRUE(out.contents.tags.empty());
}

TEST(FieldFile, BasicFixtureHoldsOneTagOfEachKind) {
  const sim::ParseOutcome out = sim::parseField(readFile(fixture("field_basic.json")), "field_basic.json");
  ASSERT_EQ(out.error, "");
  std::vector<std::string> types;
  for (const auto& tag : out.contents.tags) types.push_back(tag->type());
  EXPECT_EQ(types, (std::vector<std::string>{"iso15693", "iso14443a", "topaz", "iso14443b", "pdy", "felica"}));
  EXPECT_EQ(out.contents.tags[0]->air(), sim::Air::Iso15693);
  EXPECT_EQ(out.contents.tags[2]->air(), sim::Air::Iso14443A);
  EXPECT_EQ(out.contents.tags[4]->air(), sim::Air::Iso14443B);
  EXPECT_EQ(out.contents.tags[5]->air(), sim::Air::Felica);
  EXPECT_EQ(out.contents.tags[0]->blockCount(), 2048);
  EXPECT_EQ(out.contents.tags[0]->memory().size(), 8192u);
}

TEST(FieldFile, ShippedDefaultFieldLoadsCleanly) {
  const std::string text = readFile(std::string(TEST_FIXTURES) + "/../../data/TL42RQ_field.json");
  const sim::ParseOutcome out = sim::parseField(text, "TL42RQ_field.json");
  EXPECT_EQ(out.error, "");
  EXPECT_EQ(out.contents.tags.size(), 6u);
}

TEST(FieldFile, ShortMemoryIsPaddedWithZerosAndDumpedWhole) {
  const sim::ParseOutcome out = sim::parseField(
      R"({"tags": [{"type": "iso15693", "uid": "e0 02 00 00 00 00 00 01", "blockSize": 4, "blockCount": 2, "memory": "01 0a"}]})",
      "f.json");
  ASSERT_EQ(out.error, "");
  EXPECT_EQ(out.contents.tags[0]->memory(), (hex::Bytes{0x01, 0x0A, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sim::fieldToJson(out.contents),
            R"({
  "board": {
    "present": true,
    "dllRevision": "0.5.0",
    "mcuRevision": [
      1,
      4,
      1
    ],
    "chipName": "NFC TL42RQ",
    "interfacePin": 1
  },
  "antenna": {
    "detectLevel": 31
  },
  "tags": [
    {
      "type": "iso15693",
      "inField": true,
      "uid": "E002000000000001",
      "dsfid": "00",
      "afi": "00",
      "blockSize": 4,
      "blockCount": 2,
      "lockedBlocks": [],
      "memory": "010A000000000000"
    }
  ]
})");
}

TEST(FieldFile, EachKindTakesItsDefaults) {
  const sim::ParseOutcome out = sim::parseField(R"({"tags": [
    {"type": "topaz", "uid": "01020304050607"},
    {"type": "iso14443b", "pupi": "A1B2C3D4"},
    {"type": "pdy", "uid": "D002000000000001"},
    {"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"},
    {"type": "iso14443a", "uid": "01020304", "atqa": "0400", "sak": "08"}]})",
                                                "f.json");
  ASSERT_EQ(out.error, "");
  const auto& t = out.contents.tags;
  EXPECT_EQ(t[0]->toJson()["hr0"], "11");
  EXPECT_EQ(t[0]->toJson()["hr1"], "48");
  EXPECT_EQ(t[0]->toJson()["atqa"], "0C00");
  EXPECT_EQ(t[0]->memory().size(), 120u);
  EXPECT_EQ(t[1]->toJson()["protocolInfo"], "008171");
  EXPECT_EQ(t[1]->toJson()["applicationData"], "00000000");
  EXPECT_EQ(t[2]->blockCount(), 128);
  EXPECT_EQ(t[3]->toJson()["systemCode"], "12FC");
  EXPECT_EQ(t[3]->blockSize(), 16);
  EXPECT_EQ(t[4]->memory().size(), 64u);
}

TEST(FieldFile, TagOutOfTheFieldIsKept) {
  const sim::ParseOutcome out =
      sim::parseField(R"({"tags": [{"type": "felica", "inField": false, "idm": "0102030405060708", "pmm": "1112131415161718"}]})", "f");
  ASSERT_EQ(out.error, "");
  EXPECT_FALSE(out.contents.tags[0]->inField());
}

TEST(FieldFile, CommentsAndByteOrderMarkAreAllowed) {
  const sim::ParseOutcome out = sim::parseField("\xEF\xBB\xBF{ // the board\n \"board\": { /* pin */ \"interfacePin\": 2 } }", "f");
  EXPECT_EQ(out.error, "");
  EXPECT_EQ(out.contents.board.interfacePin, 2);
}

TEST(FieldFile, SyntaxErrorGivesLineAndColumnFromTheByteOffset) {
  EXPECT_EQ(refusal(readFile(fixture("field_broken.json"))),
            "f.json: line 3, column 21: syntax error while parsing object key - unexpected ','; expected string literal");
  EXPECT_EQ(refusal(""), "f.json: line 1, column 1: syntax error while parsing value - unexpected end of input; "
                         "expected '[', '{', or a literal");
  EXPECT_EQ(refusal("{\n\n  \"board\": tru }"),
            "f.json: line 3, column 15: syntax error while parsing value - invalid literal; last read: '\"board\": tru '");
}

TEST(FieldFile, WrongTypesAreRefusedWithTheirPlace) {
  EXPECT_EQ(refusal("{\"board\": {\n  \"interfacePin\": \"1\"}}"),
            "f.json: line 2, column 19: board.interfacePin: a whole number from 0 to 2 is needed, found the text \"1\"");
  EXPECT_EQ(refusal(R"({"board": {"present": 1}})"),
            "f.json: line 1, column 23: board.present: true or false is needed, found the number 1");
  EXPECT_EQ(refusal(R"({"board": {"mcuRevision": [1, "4", 1]}})"),
            "f.json: line 1, column 31: board.mcuRevision[1]: a whole number from 0 to 255 is needed, found the text \"4\"");
  EXPECT_EQ(refusal(R"({"board": {"mcuRevision": 141}})"),
            "f.json: line 1, column 27: board.mcuRevision: a list of at most 16 numbers from 0 to 255 is needed, "
            "found the number 141");
  EXPECT_EQ(refusal(R"({"board": {"dllRevision": 0.5}})"),
            "f.json: line 1, column 27: board.dllRevision: a text is needed, found the number 0.5");
  EXPECT_EQ(refusal(R"({"board": {"chipName": ""}})"),
            "f.json: line 1, column 24: board.chipName: a text of 1 to 100 characters is needed, found 0");
  EXPECT_EQ(refusal(R"({"board": {"chipName": "NFC\tTL"}})"),
            "f.json: line 1, column 24: board.chipName: only printable ASCII characters are allowed");
  EXPECT_EQ(refusal(R"({"antenna": {"detectLevel": 4.5}})"),
            "f.json: line 1, column 29: antenna.detectLevel: a whole number from 0 to 255 is needed, found the number 4.5");
  EXPECT_EQ(refusal(R"({"board": []})"), "f.json: line 1, column 11: board: an object { ... } is needed, found a list");
  EXPECT_EQ(refusal("[1, 2]"),
            "f.json: line 1, column 1: the field must be one JSON object { \"board\": ..., \"tags\": [...] }, found a list");
  EXPECT_EQ(refusal(R"({"tags": {}})"), "f.json: line 1, column 10: tags: a list of tags [ ... ] is needed, found an object");
}

TEST(FieldFile, UnknownKeysAreRefused) {
  EXPECT_EQ(refusal(R"({"bord": {}})"),
            "f.json: line 1, column 10: bord: unknown key \"bord\"; the keys here are board, antenna, tags, answers");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "pdy", "uid": "D002000000000001", "blocksize": 4}]})"),
            "f.json: line 1, column 67: tags[0].blocksize: unknown key \"blocksize\"; the keys here are type, product, "
            "inField, distance, loadShift, uid, blockSize, blockCount, memory, lockedBlocks, chipId");
}

TEST(FieldFile, TagWithoutTypeOrOfUnknownTypeIsRefused) {
  EXPECT_EQ(refusal("{\"tags\": [\n  {\"uid\": \"E002\"}]}"),
            "f.json: line 2, column 3: tags[0]: the key \"type\" is missing; the types are iso15693, iso14443a, topaz, "
            "iso14443b, pdy, felica");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "mifare"}]})"),
            "f.json: line 1, column 20: tags[0].type: unknown tag type \"mifare\"; the types are iso15693, iso14443a, "
            "topaz, iso14443b, pdy, felica");
  EXPECT_EQ(refusal(R"({"tags": [{"type": 15693}]})"),
            "f.json: line 1, column 20: tags[0].type: a text is needed, found the number 15693");
  EXPECT_EQ(refusal(R"({"tags": [7]})"),
            "f.json: line 1, column 11: tags[0]: a tag { \"type\": ... } is needed, found the number 7");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693"}]})"),
            "f.json: line 1, column 11: tags[0]: the key \"uid\" is missing");
}

TEST(FieldFile, BadHexadecimalIsRefused) {
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693", "uid": "E002000000000"}]})"),
            "f.json: line 1, column 39: tags[0].uid: an odd number of hexadecimal digits (13): every byte takes two");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693", "uid": "E00200000000000G"}]})"),
            "f.json: line 1, column 39: tags[0].uid: 'G' is no hexadecimal digit");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693", "uid": "E0020000"}]})"),
            "f.json: line 1, column 39: tags[0].uid: hexadecimal text of 8 bytes is needed, found 4");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso14443a", "uid": "0102030405", "atqa": "4400", "sak": "00"}]})"),
            "f.json: line 1, column 40: tags[0].uid: hexadecimal text of 4, 7 or 10 bytes is needed, found 5");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso14443a", "uid": "01020304", "atqa": "4400", "sak": "0000"}]})"),
            "f.json: line 1, column 75: tags[0].sak: hexadecimal text of 1 byte is needed, found 2");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "pdy", "uid": "D002000000000001", "memory": 12}]})"),
            "f.json: line 1, column 64: tags[0].memory: hexadecimal text is needed, found the number 12");
}

TEST(FieldFile, MemoryMustFitItsBlocks) {
  EXPECT_EQ(refusal(R"({"tags": [{"type": "pdy", "uid": "D002000000000001", "blockCount": 1, "memory": "0102030405"}]})"),
            "f.json: line 1, column 81: tags[0].memory: the memory holds 5 bytes, more than blockSize x blockCount = 4");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693", "uid": "E002000000000001", "blockSize": 32, "blockCount": 4096}]})"),
            "f.json: line 1, column 90: tags[0].blockCount: blockSize x blockCount is 131072 bytes, more than the "
            "65536 a tag may hold");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "iso15693", "uid": "E002000000000001", "blockSize": 0}]})"),
            "f.json: line 1, column 72: tags[0].blockSize: a whole number from 1 to 32 is needed, found the number 0");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "pdy", "uid": "D002000000000001", "lockedBlocks": [1, 128]}]})"),
            "f.json: line 1, column 74: tags[0].lockedBlocks[1]: block 128 does not exist: the tag has 128 blocks");
  EXPECT_EQ(refusal(R"({"tags": [{"type": "pdy", "uid": "D002000000000001", "lockedBlocks": [-1]}]})"),
            "f.json: line 1, column 71: tags[0].lockedBlocks[0]: a block number (a whole number from 0) is needed, "
            "found the number -1");
}

TEST(FieldFile, ErrorInALaterTagPointsAtThatTag) {
  const std::string text = R"({
  "tags": [
    {"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"},
    {"type": "felica", "idm": "0102030405060708", "pmm": [1, 2]}
  ]
})";
  EXPECT_EQ(refusal(text), "f.json: line 4, column 58: tags[1].pmm: hexadecimal text is needed, found a list");
}

TEST(FieldFile, KeyGivenTwiceIsRefusedAtItsSecondValue) {
  EXPECT_EQ(refusal(R"({"board": {"interfacePin": 1, "interfacePin": 9}})"),
            "f.json: line 1, column 47: board.interfacePin: the key \"interfacePin\" is given twice in one object");
  EXPECT_EQ(refusal("{\"board\": {\"present\": true,\n           \"present\": false}}"),
            "f.json: line 2, column 23: board.present: the key \"present\" is given twice in one object");
  // Inside a list, and even with the same value both times.
  EXPECT_EQ(refusal(R"({"tags": [{"type": "felica", "idm": "0102030405060708", "pmm": "1112131415161718"},
                     {"type": "felica", "type": "felica"}]})"),
            "f.json: line 2, column 49: tags[1].type: the key \"type\" is given twice in one object");
  // Given three times: the place is that of the second.
  EXPECT_EQ(refusal(R"({"antenna": {"detectLevel": 1, "detectLevel": 2, "detectLevel": 3}})"),
            "f.json: line 1, column 47: antenna.detectLevel: the key \"detectLevel\" is given twice in one object");
  // The parser stops at the repetition: what follows may be broken, even a lone '/'.
  EXPECT_EQ(refusal("{\"board\": {\"present\": true, \"present\": false, \"x\": [1 / 2, {]"),
            "f.json: line 1, column 40: board.present: the key \"present\" is given twice in one object");
  // The same key in two objects is no repetition.
  EXPECT_EQ(sim::parseField(R"({"board": {"present": true}, "antenna": {"present": 1}})", "f.json").error.substr(0, 36),
            "f.json: line 1, column 53: antenna.p");
}

TEST(FieldFile, NumberTooLargeForADoubleIsRefusedWithItsPlace) {
  EXPECT_EQ(refusal("{\"antenna\": {\"detectLevel\": 1e400}}"),
            "f.json: line 1, column 29: number overflow parsing '1e400'");
  EXPECT_EQ(refusal("{\n  \"board\": {\"mcuRevision\": [1, -2e999, 3]}}"),
            "f.json: line 2, column 32: number overflow parsing '-2e999'");
}

TEST(FieldFile, KeysAndTextsWithEscapesAreLocated) {
  // The escaped key is "chipName"; the error lies behind it, after an escaped quote.
  EXPECT_EQ(refusal(R"({"board": {"chip\u004eame": "a\"}", "interfacePin": 5}})"),
            "f.json: line 1, column 53: board.interfacePin: a whole number from 0 to 2 is needed, found the number 5");
  EXPECT_EQ(refusal(R"({"board": {"chip\u004eame": 5}})"),
            "f.json: line 1, column 29: board.chipName: a text is needed, found the number 5");
}

TEST(FieldFile, DeepNestingIsRefusedWithoutCrashing) {
  const std::string deep = "{\"tags\": [" + std::string(100000, '[') + std::string(100000, ']') + "]}";
  EXPECT_EQ(refusal(deep), "f.json: line 1, column 11: tags[0]: a tag { \"type\": ... } is needed, found a list");
}

}  // namespace
