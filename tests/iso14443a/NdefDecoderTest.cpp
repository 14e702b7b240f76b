// The NDEF decoder on Type 2 memory images. The messages are built here as the NFC Forum
// NDEF format lays records out (header flags MB ME CF SR IL and TNF, type length,
// payload length of one or four bytes, type, payload) inside the NDEF message TLV of the
// Type 2 Tag layout; each expected text follows from the record type definitions
// (Text, URI, Smart Poster, MIME media, vCard 2.1) and the panel's way of showing them.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "iso14443a/NdefDecoder.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char MB = 0x80, ME = 0x40, SR = 0x10, IL = 0x08;
constexpr unsigned char kWellKnown = 0x01, kMedia = 0x02, kAbsoluteUri = 0x03, kEmpty = 0x00;

Bytes text(const std::string& s) { return Bytes(s.begin(), s.end()); }
Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// One record as the NFC Forum NDEF format lays it out.
Bytes record(unsigned char flags, unsigned char tnf, const Bytes& type, const Bytes& payload) {
  Bytes r{static_cast<unsigned char>(flags | tnf), static_cast<unsigned char>(type.size())};
  if (flags & SR) {
    r.push_back(static_cast<unsigned char>(payload.size()));
  } else {
    const auto n = static_cast<unsigned>(payload.size());
    r.insert(r.end(), {static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
                       static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)});
  }
  return r + type + payload;
}
Bytes uriRecord(unsigned char flags, unsigned char code, const std::string& rest) {
  return record(flags | SR, kWellKnown, text("U"), Bytes{code} + text(rest));
}
Bytes textRecord(unsigned char flags, const std::string& language, const std::string& body, unsigned char status = 0) {
  return record(flags | SR, kWellKnown, text("T"),
                Bytes{static_cast<unsigned char>(status | language.size())} + text(language) + text(body));
}
Bytes actionRecord(unsigned char flags, unsigned char action) {
  return record(flags | SR, kWellKnown, text("act"), Bytes{action});
}

// The NDEF message TLV (one length byte, or FF and two) and the terminator TLV.
Bytes ndefTlv(const Bytes& message, bool longLength = false) {
  Bytes t{0x03};
  if (longLength || message.size() >= 0xFF)
    t.insert(t.end(), {0xFF, static_cast<unsigned char>(message.size() >> 8), static_cast<unsigned char>(message.size())});
  else
    t.push_back(static_cast<unsigned char>(message.size()));
  return t + message;
}
const Bytes kTerminatorTlv{0xFE};

// The memory from page 3 on: capability container E1 (magic), 10 (version 1.0), size, 00.
std::string memoryText(const Bytes& tlvs) {
  static const char* digits = "0123456789ABCDEF";
  std::string out;
  for (unsigned char b : Bytes{0xE1, 0x10, 0x12, 0x00} + tlvs) {
    out += digits[b >> 4];
    out += digits[b & 0x0F];
  }
  return out;
}

ndef::Result decode(const Bytes& tlvs) { return ndef::decodeNdefMessage(memoryText(tlvs)); }
std::string message(const Bytes& tlvs) { return decode(tlvs).message; }

// --- tables --------------------------------------------------------------------------------

TEST(NdefTables, UriPrefixesAreTheNfcForumTableWithNewsAsTheDecoderHasIt) {
  const std::vector<std::string> expected{
      "",           "http://www.", "https://www.", "http://",      "https://",   "tel:",
      "mailto:",    "ftp://anonymous:anonymous@",  "ftp://ftp.",   "ftps://",    "sftp://",
      "smb://",     "nfs://",      "ftp://",       "dav://",       "news://",    "telnet://",
      "imap:",      "rtsp://",     "urn:",         "pop:",         "sip:",       "sips:",
      "tftp:",      "btspp://",    "btl2cap://",   "btgoep://",    "tcpobex://", "irdaobex://",
      "file://",    "urn:epc:id:", "urn:epc:tag:", "urn:epc:pat:", "urn:epc:raw:", "urn:epc:",
      "urn:nfc:"};
  ASSERT_EQ(expected.size(), 0x24u);
  for (int code = 0; code < 0x24; ++code) EXPECT_EQ(ndef::uriPrefix(code), expected[static_cast<std::size_t>(code)]) << code;
  EXPECT_STREQ(ndef::uriPrefix(0x24), "");
  EXPECT_STREQ(ndef::uriPrefix(0xFF), "");
  EXPECT_STREQ(ndef::uriPrefix(-1), "");
}

TEST(NdefTables, TlvTypesAreNamedByTheirDigits) {
  EXPECT_STREQ(ndef::tlvName("00"), "Used to Padding");
  EXPECT_STREQ(ndef::tlvName("01"), "Defines details of the lock bits");
  EXPECT_STREQ(ndef::tlvName("02"), "Identify reserved memory areas");
  EXPECT_STREQ(ndef::tlvName("03"), "Contains NDEF message");
  EXPECT_STREQ(ndef::tlvName("FD"), "Tag proprietary information");
  EXPECT_STREQ(ndef::tlvName("FE"), "Last TLV block in the data area");
  EXPECT_STREQ(ndef::tlvName("04"), "No Info");
  EXPECT_STREQ(ndef::tlvName("fe"), "No Info");
}

// --- URI ----------------------------------------------------------------------------------------

TEST(NdefUri, ShortUriRecordOfCode01ShowsABlankThePrefixAndTheRest) {
  const ndef::Result r = decode(ndefTlv(uriRecord(MB | ME, 0x01, "example.com")) + kTerminatorTlv);
  EXPECT_EQ(r.message, " http://www.example.com");
  EXPECT_TRUE(r.urlShown);
  EXPECT_EQ(r.link, "http://www.example.com");
  EXPECT_EQ(r.records, 1);
}

TEST(NdefUri, PrefixesOfSeveralCodes) {
  struct Case {
    unsigned char code;
    const char* rest;
    const char* shown;
  };
  for (const Case& c : std::vector<Case>{{0x00, "urn:isbn:1", " urn:isbn:1"},
                                         {0x02, "example.org/a", " https://www.example.org/a"},
                                         {0x03, "10.0.0.1", " http://10.0.0.1"},
                                         {0x04, "example.net", " https://example.net"},
                                         {0x05, "+33123456", " tel:+33123456"},
                                         {0x06, "a@example.com", " mailto:a@example.com"},
                                         {0x0D, "host/f", " ftp://host/f"},
                                         {0x1D, "/tmp/x", " file:///tmp/x"},
                                         {0x23, "sn:x", " urn:nfc:sn:x"},
                                         {0x24, "abc", " abc"}}) {
    EXPECT_EQ(message(ndefTlv(uriRecord(MB | ME, c.code, c.rest)) + kTerminatorTlv), c.shown) << int(c.code);
  }
}

TEST(NdefUri, Code0FGivesNewsWithTwoSlashes) {
  const ndef::Result r = decode(ndefTlv(uriRecord(MB | ME, 0x0F, "comp.lang.c")) + kTerminatorTlv);
  EXPECT_EQ(r.message, " news://comp.lang.c");
  EXPECT_EQ(r.link, "news://comp.lang.c");
}

TEST(NdefUri, UriWithOnlyTheCodeShowsThePrefix) {
  const ndef::Result r = decode(ndefTlv(uriRecord(MB | ME, 0x02, "")) + kTerminatorTlv);
  EXPECT_EQ(r.message, " https://www.");
  EXPECT_EQ(r.link, "https://www.");
}

TEST(NdefUri, TheLinkShowsTheLastUriOfTheMessage) {
  const ndef::Result r =
      decode(ndefTlv(uriRecord(MB, 0x03, "a.example") + uriRecord(ME, 0x04, "b.example")) + kTerminatorTlv);
  EXPECT_EQ(r.message, " http://a.example https://b.example");
  EXPECT_EQ(r.link, "https://b.example");
}

TEST(NdefUri, WithSrClearThePayloadLengthIsReadFromFourBytes) {
  const Bytes long_ = record(MB | ME, kWellKnown, text("U"), Bytes{0x01} + text("example.com"));
  ASSERT_EQ(long_[2], 0x00);
  ASSERT_EQ(long_[5], 0x0C);
  EXPECT_EQ(message(ndefTlv(long_) + kTerminatorTlv), " http://www.example.com");
}

// --- Text -------------------------------------------------------------------------------------------

TEST(NdefText, TextRecordShowsTheTextWithoutItsLanguageCode) {
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "en", "Hello, world")) + kTerminatorTlv), "Hello, world");
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "en-US", "Colour")) + kTerminatorTlv), "Colour");
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "", "x")) + kTerminatorTlv), "x");
}

TEST(NdefText, TheEncodingBitIsNotLookedAt) {
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "fr", "Bonjour", 0x80)) + kTerminatorTlv), "Bonjour");
}

TEST(NdefText, RecordsFollowOneAnotherWithoutSeparator) {
  EXPECT_EQ(message(ndefTlv(textRecord(MB, "en", "Hello") + textRecord(ME, "en", "World")) + kTerminatorTlv),
            "HelloWorld");
}

TEST(NdefText, CharactersAboveAsciiPassAsSingleBytes) {
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "de", "Gr\xFC\xDF")) + kTerminatorTlv), "Gr\xFC\xDF");
}

// --- Smart poster and action ----------------------------------------------------------------------

TEST(NdefSmartPoster, OneLineThenTheLinesOfItsInnerRecords) {
  const Bytes inner = uriRecord(MB, 0x01, "example.org") + textRecord(0, "en", "TL42RQ") + actionRecord(ME, 0x00);
  const ndef::Result r = decode(ndefTlv(record(MB | ME | SR, kWellKnown, text("Sp"), inner)) + kTerminatorTlv);
  EXPECT_EQ(r.message,
            "SMART POSTER record : \r\n"
            " http://www.example.org"
            "TL42RQ"
            "ACTION : \r\ntype : 'act'\r\n- do the action\r\n");
  EXPECT_EQ(r.link, "http://www.example.org");
  EXPECT_EQ(r.records, 4);
}

TEST(NdefSmartPoster, TheDefaultFieldsTagMemoryDecodes) {
  // Pages 3 to 18 of the Type 2 tag of the shipped field: a URI record, then a smart
  // poster with a URI, a Text and an action.
  const std::string memory =
      "E1100C00" "03399101" "0C550265" "78616D70" "6C652E63" "6F6D5102" "24537091" "010C5501"
      "6578616D" "706C652E" "6F726711" "01095402" "656E544C" "34325251" "51030161" "637400FE";
  const ndef::Result r = ndef::decodeNdefMessage(memory);
  EXPECT_EQ(r.message,
            " https://www.example.com"
            "SMART POSTER record : \r\n"
            " http://www.example.org"
            "TL42RQ"
            "ACTION : \r\ntype : 'act'\r\n- do the action\r\n");
  EXPECT_EQ(r.link, "http://www.example.org");
}

TEST(NdefSmartPoster, ActionValues) {
  const auto action = [](unsigned char value) {
    return message(ndefTlv(actionRecord(MB | ME, value)) + kTerminatorTlv);
  };
  EXPECT_EQ(action(0x00), "ACTION : \r\ntype : 'act'\r\n- do the action\r\n");
  EXPECT_EQ(action(0x01), "ACTION : \r\ntype : 'act'\r\n- save the action for later\r\n");
  EXPECT_EQ(action(0x02), "ACTION : \r\ntype : 'act'\r\n- open the action\r\n");
  EXPECT_EQ(action(0x03), "ACTION : \r\ntype : 'act'\r\n\r\n");
}

TEST(NdefSmartPoster, InnerSizeAndTypeRecordsShowNothingAndTheirPayloadIsWalkedAsRecords) {
  // "s" (size) is not one of the names; its four payload bytes 00 00 00 0C are then read
  // as records: four empty records (format 0).
  const Bytes inner = uriRecord(MB, 0x03, "a.b") + record(SR, kWellKnown, text("s"), Bytes{0, 0, 0, 0x0C}) +
                      textRecord(ME, "en", "Z");
  EXPECT_EQ(message(ndefTlv(record(MB | ME | SR, kWellKnown, text("Sp"), inner)) + kTerminatorTlv),
            "SMART POSTER record : \r\n http://a.bZ");
}

// --- MIME -------------------------------------------------------------------------------------------

TEST(NdefMime, MediaRecordShowsItsTypeTwiceAndItsPayloadAndEndsTheWalk) {
  const Bytes media = record(MB | SR, kMedia, text("text/plain"), text("Hello"));
  const ndef::Result r = decode(ndefTlv(media + textRecord(ME, "en", "never")) + kTerminatorTlv);
  EXPECT_EQ(r.message, "type:MIME:text/plain\r\n\r\ntext/plain\r\nHello");
  EXPECT_EQ(r.records, 1);
}

TEST(NdefMime, TheTypeIsMadeLowerCaseAndEveryKindShowsAlike) {
  for (const std::string type : {"Application/JSON", "image/png", "audio/mpeg", "video/mp4", "model/x"}) {
    std::string lower;
    for (char c : type) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(message(ndefTlv(record(MB | ME | SR, kMedia, text(type), text("{}"))) + kTerminatorTlv),
              "type:MIME:" + lower + "\r\n\r\n" + lower + "\r\n{}");
  }
}

// --- vCard ------------------------------------------------------------------------------------------

Bytes vCardRecord(const std::string& card) { return record(MB | ME | SR, kMedia, text("text/x-vcard"), text(card)); }

TEST(NdefVCard, LinesGetTheirLabelsByTheirFirstLetters) {
  const std::string card =
      "BEGIN:VCARD\r\n"
      "VERSION:2.1\r\n"
      "N:Doe;John\r\n"
      "FN:John Doe\r\n"
      "ORG:TL42;Lab\r\n"
      "TITLE:Engineer\r\n"
      "TEL;FAX:+33123\r\n"
      "TEL;CELL:+33456\r\n"
      "ADR:;;1 Main St;Paris\r\n"
      "LABEL:Office\r\n"
      "EMAIL:john@example.com\r\n"
      "URL:http://example.com\r\n"
      "NOTE:hi\r\n"
      "END:VCARD\r\n";
  const ndef::Result r = decode(ndefTlv(vCardRecord(card)) + kTerminatorTlv);
  EXPECT_EQ(r.message,
            "type:MIME:text/x-vcard\r\n\r\n"
            "2.1"
            "\r\nNAME : Doe John"
            "\r\nFORMATED NAME : John Doe"
            "\r\nORGANISTION : TL42;Lab"
            "\r\nTITLE : Engineer"
            "\r\nFAX : +33123"
            "\r\nTEL : +33456"
            "\r\nADDRESS :   1 Main St Paris"
            "\r\nLABEL : Office"
            "\r\nEMAIL : john@example.com"
            "\r\nURL : http://example.com"
            "\r\nNAME : hi"
            "VCARD");
  EXPECT_TRUE(r.urlShown);
  EXPECT_EQ(r.link, "http://example.com");
}

TEST(NdefVCard, FaxAnywhereInATelephoneLineGivesTheFaxLabel) {
  const std::string card = "BEGIN:VCARD\r\nTEL;TYPE=WORK,FAX:+1\r\nTEL;TYPE=HOME:+2\r\nEND:VCARD\r\n";
  EXPECT_EQ(message(ndefTlv(vCardRecord(card)) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nFAX : +1\r\nTEL : +2VCARD");
}

TEST(NdefVCard, ANoteLineStartingWithNGetsTheNameLabel) {
  const std::string card = "BEGIN:VCARD\r\nNOTE:call back\r\nNICKNAME:Jo\r\nEND:VCARD\r\n";
  EXPECT_EQ(message(ndefTlv(vCardRecord(card)) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nNAME : call back\r\nNAME : JoVCARD");
}

TEST(NdefVCard, QuotedPrintableSoftBreakKeepsTheLineAndShowsALineFeedAndATab) {
  const std::string card =
      "BEGIN:VCARD\r\nADR;ENCODING=QUOTED-PRINTABLE:1 Main St=0D=0A=\r\nParis\r\nEND:VCARD\r\n";
  EXPECT_EQ(message(ndefTlv(vCardRecord(card)) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nADDRESS : 1 Main St\n\tParisVCARD");
}

TEST(NdefVCard, ACharacterInFrontOfABareLineFeedEndsTheLineAndIsLost) {
  const std::string card = "BEGIN:VCARD\r\nN:Doe\nFN:X\r\nEND:VCARD\r\n";
  EXPECT_EQ(message(ndefTlv(vCardRecord(card)) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nNAME : Do\r\nFORMATED NAME : XVCARD");
}

TEST(NdefVCard, ALineWithoutColonShowsWhole) {
  const std::string card = "BEGIN:VCARD\r\nEMAIL;nothing\r\nEND:VCARD\r\n";
  EXPECT_EQ(message(ndefTlv(vCardRecord(card)) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nEMAIL : EMAIL nothingVCARD");
}

TEST(NdefVCard, ACardThatDoesNotBeginWithBeginVCardShowsNothing) {
  // Eleven characters are read and compared; the record ends there, and the terminator
  // right behind them ends the walk.
  const ndef::Result r = decode(ndefTlv(vCardRecord("BEGIN:VCALX")) + kTerminatorTlv);
  EXPECT_EQ(r.message, "");
  EXPECT_EQ(r.records, 1);
}

TEST(NdefVCard, TheCardEndsTheWalk) {
  const std::string card = "BEGIN:VCARD\r\nFN:A\r\nEND:VCARD\r\n";
  const Bytes card1 = record(MB | SR, kMedia, text("text/x-vcard"), text(card));
  EXPECT_EQ(message(ndefTlv(card1 + textRecord(ME, "en", "after")) + kTerminatorTlv),
            "type:MIME:text/x-vcard\r\n\r\n\r\nFORMATED NAME : AVCARD");
}

// --- the walk ------------------------------------------------------------------------------------

TEST(NdefWalk, AtMostTwentyRecordsAreDecoded) {
  Bytes records;
  for (int i = 1; i <= 25; ++i) {
    const std::string n = (i < 10 ? "0" : "") + std::to_string(i);
    records = records + textRecord(i == 1 ? MB : i == 25 ? ME : 0, "en", n);
  }
  const ndef::Result r = decode(ndefTlv(records) + kTerminatorTlv);
  EXPECT_EQ(r.message, "0102030405060708091011121314151617181920");
  EXPECT_EQ(r.records, 20);
}

TEST(NdefWalk, AShortRecordFollowedByTheTerminatorEndsTheWalk) {
  // The TLV's length covers more than the first record; the FE right behind it ends the
  // walk, so the bytes behind it are not read as a record.
  Bytes message_ = uriRecord(MB | ME, 0x03, "a.b") + kTerminatorTlv + textRecord(MB | ME, "en", "hidden");
  const ndef::Result r = decode(ndefTlv(message_));
  EXPECT_EQ(r.message, " http://a.b");
  EXPECT_EQ(r.records, 1);
  // Without the terminator the next record is read.
  EXPECT_EQ(message(ndefTlv(uriRecord(MB | ME, 0x03, "a.b") + textRecord(MB | ME, "en", "shown"))),
            " http://a.bshown");
}

TEST(NdefWalk, ASingleRecordThatUsesUpTheWholeLengthEndsTheWalk) {
  const Bytes first = uriRecord(MB | ME, 0x03, "a.b");
  // The TLV covers only the first record; a record follows in memory without terminator.
  Bytes tlv{0x03, static_cast<unsigned char>(first.size())};
  EXPECT_EQ(message(tlv + first + textRecord(MB | ME, "en", "beyond")), " http://a.b");
}

TEST(NdefWalk, TheThreeByteLengthFormIsRead) {
  EXPECT_EQ(message(ndefTlv(textRecord(MB | ME, "en", "long form"), true) + kTerminatorTlv), "long form");
}

TEST(NdefWalk, LockControlTlvBeforeTheMessageIsSkipped) {
  const Bytes lock{0x01, 0x03, 0xA0, 0x10, 0x44};
  EXPECT_EQ(message(lock + ndefTlv(uriRecord(MB | ME, 0x04, "example.com")) + kTerminatorTlv), " https://example.com");
}

TEST(NdefWalk, OnlyOneLockControlTlvIsSkipped) {
  const Bytes lock{0x01, 0x03, 0xA0, 0x10, 0x44};
  EXPECT_EQ(message(lock + lock + ndefTlv(uriRecord(MB | ME, 0x04, "example.com")) + kTerminatorTlv), "");
}

TEST(NdefWalk, MemoryControlTlvOrPaddingBeforeTheMessageGiveNoOutput) {
  const Bytes memoryControl{0x02, 0x03, 0xA0, 0x10, 0x44};
  const ndef::Result r = decode(memoryControl + ndefTlv(uriRecord(MB | ME, 0x04, "example.com")) + kTerminatorTlv);
  EXPECT_EQ(r.message, "");
  EXPECT_FALSE(r.urlShown);
  EXPECT_EQ(r.records, 0);
  EXPECT_EQ(message(Bytes{0x00} + ndefTlv(uriRecord(MB | ME, 0x04, "example.com")) + kTerminatorTlv), "");
}

TEST(NdefWalk, AnotherCapabilityContainerMagicGivesNothing) {
  std::string memory = memoryText(ndefTlv(uriRecord(MB | ME, 0x04, "example.com")) + kTerminatorTlv);
  memory.replace(0, 2, "E2");
  EXPECT_EQ(ndef::decodeNdefMessage(memory).message, "");
  EXPECT_EQ(ndef::decodeNdefMessage("").message, "");
}

TEST(NdefWalk, AnEmptyRecordConsumesNoByte) {
  // Format 0, then the next byte starts the next record.
  EXPECT_EQ(message(ndefTlv(Bytes{kEmpty} + uriRecord(MB | ME, 0x03, "a.b")) + kTerminatorTlv), " http://a.b");
}

TEST(NdefWalk, OnlyTheTwoLowBitsOfTheFormatCount) {
  // Format 5 (unknown) is taken for 1 and format 4 (external type) for 0; format 3
  // (absolute URI) goes to the well-known branch.
  const Bytes asWellKnown = record(MB | ME | SR, 0x05, text("U"), Bytes{0x03} + text("x.y"));
  EXPECT_EQ(message(ndefTlv(asWellKnown) + kTerminatorTlv), " http://x.y");
  const Bytes absolute = record(MB | ME | SR, kAbsoluteUri, text("T"), Bytes{0x02} + text("enok"));
  EXPECT_EQ(message(ndefTlv(absolute) + kTerminatorTlv), "ok");
  const Bytes asEmpty = Bytes{static_cast<unsigned char>(MB | ME | SR | 0x04)} + uriRecord(MB | ME, 0x03, "x.y");
  EXPECT_EQ(message(ndefTlv(asEmpty) + kTerminatorTlv), " http://x.y");
}

TEST(NdefWalk, AnIdFieldIsNotSkipped) {
  // With IL the ID length byte stands where the decoder reads the type: type "01", which
  // shows nothing, and the walk goes on inside the record.
  Bytes r{static_cast<unsigned char>(MB | ME | SR | IL | kWellKnown), 0x01, 0x04, 0x01, 'U', 'i', 0x03, 'a', '.', 'b'};
  const ndef::Result out = decode(ndefTlv(r) + kTerminatorTlv);
  EXPECT_FALSE(out.urlShown);
  EXPECT_EQ(out.message.find("http"), std::string::npos);
}

TEST(NdefWalk, EventsComeForEachRecordAndEachType) {
  const Bytes m = ndefTlv(uriRecord(MB, 0x01, "a.b") + textRecord(ME, "en", "t")) + kTerminatorTlv;
  std::vector<std::string> records;
  std::vector<std::string> links;
  int yields = 0;
  ndef::Events e;
  e.recordDone = [&](const std::string& t) { records.push_back(t); };
  e.urlFound = [&](const std::string& l) { links.push_back(l); };
  e.yield = [&] { ++yields; };
  ndef::decodeNdefMessage(memoryText(m), e);
  EXPECT_EQ(records, (std::vector<std::string>{" http://www.a.b", "t"}));
  EXPECT_EQ(links, (std::vector<std::string>{"http://www.a.b"}));
  EXPECT_EQ(yields, 4);
}

// --- lengths past the end of the memory ---------------------------------------------------------

TEST(NdefPastTheEnd, AHugePayloadLengthTakesWhatTheMemoryHoldsAndStops) {
  Bytes r{static_cast<unsigned char>(MB | ME | kWellKnown), 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 'U', 0x03, 'a', '.', 'b'};
  const ndef::Result out = decode(ndefTlv(r));
  EXPECT_EQ(out.message, " http://a.b");
  EXPECT_EQ(out.link, "http://a.b");
}

TEST(NdefPastTheEnd, AMemoryCutInsideARecordShowsWhatThereIs) {
  std::string memory = memoryText(ndefTlv(textRecord(MB | ME, "en", "abcdef")));
  memory.resize(memory.size() - 3);  // "f" and the second digit of "e" (65) are gone
  EXPECT_EQ(ndef::decodeNdefMessage(memory).message, "abcd\x06");
}

TEST(NdefPastTheEnd, AVCardWithoutEndStops) {
  const std::string card = "BEGIN:VCARD\r\nFN:A\r\nN:B";
  Bytes r = record(MB | ME | SR, kMedia, text("text/x-vcard"), text(card));
  r[2] = 0xF0;  // a payload longer than the memory
  EXPECT_EQ(message(ndefTlv(r)), "type:MIME:text/x-vcard\r\n\r\n\r\nFORMATED NAME : A");
}

TEST(NdefPastTheEnd, TextThatIsNoHexadecimalReadsAsZeros) {
  EXPECT_EQ(ndef::decodeNdefMessage("E1ZZZZZZ03ZZ").message, "");
  EXPECT_EQ(ndef::decodeNdefMessage("E1100600" "0308" "D1" "01" "04" "55" "03" "6G2E62").message, " http://\x06.b");
}

}  // namespace
