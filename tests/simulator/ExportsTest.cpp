// The built libTL42RQ.so loaded with dlopen and called through its exported C symbols,
// exactly as the program sees it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "driver/TL42RQ.h"
#include "simulator/SimSupport.h"

using simtest::fixture;
using simtest::Reply;

namespace {

class Library {
 public:
  Library() : handle_(dlopen(SIM_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() {
    if (handle_) dlclose(handle_);
  }
  bool loaded() const { return handle_ != nullptr; }
  template <typename Fn>
  Fn get(const char* name) const {
    return reinterpret_cast<Fn>(dlsym(handle_, name));
  }

 private:
  void* handle_;
};

using Status = std::int32_t (*)();
using Answer = std::int32_t (*)(char*);
using Request = std::int32_t (*)(const char*, char*);

class ExportsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { lib = new Library; }
  static void TearDownTestSuite() { delete lib; }

  void SetUp() override {
    ASSERT_TRUE(lib->loaded()) << dlerror();
    ASSERT_EQ(lib->get<std::int32_t (*)(const char*)>("TL42RQSim_LoadField")(fixture("field_basic.json").c_str()), 0);
    ASSERT_EQ(lib->get<Status>("TL42RQSim_Reset")(), 0);
  }

  Reply answer(const char* symbol) {
    auto fn = lib->get<Answer>(symbol);
    return simtest::ask([&](char* a) { return fn(a); });
  }
  Reply request(const char* symbol, const char* text) {
    auto fn = lib->get<Request>(symbol);
    return simtest::ask([&](char* a) { return fn(text, a); });
  }
  std::int32_t status(const char* symbol) { return lib->get<Status>(symbol)(); }

  static Library* lib;
};

Library* ExportsTest::lib = nullptr;

TEST_F(ExportsTest, LibraryExportsTheFifteenOperationsAndTheControlInterface) {
  for (const char* name :
       {"TL42RQDLL_USBconnect", "TL42RQDLL_USBhandlecheck", "TL42RQDll_GetDLLrev", "TL42RQDLL_getMCUrev",
        "TL42RQDll_Idn", "TL42RQDll_Echo", "TL42RQDll_Select", "TL42RQDll_SendReceive", "TL42RQDll_KQCmd",
        "TL42RQDll_FieldOff", "TL42RQDll_ResetSPI", "TL42RQDll_SendIRQPulse", "TL42RQDll_SendNSSPulse",
        "TL42RQDll_Polling_Reading", "TL42RQDLL_getInterfacePinState", "TL42RQSim_LoadField", "TL42RQSim_DumpField",
        "TL42RQSim_SetBoardPresent", "TL42RQSim_Reset", "TL42RQSim_LastError"})
    EXPECT_NE(lib->get<void*>(name), nullptr) << name;
  // The board model stays inside the library.
  EXPECT_EQ(lib->get<void*>("_ZN3sim5boardEv"), nullptr);
}

TEST_F(ExportsTest, EveryOperationGivesItsAnswer) {
  EXPECT_EQ(status("TL42RQDLL_USBconnect"), 0);
  EXPECT_EQ(status("TL42RQDLL_USBhandlecheck"), 0);
  EXPECT_EQ(answer("TL42RQDll_GetDLLrev"), (Reply{0, "0.5.0"}));
  EXPECT_EQ(answer("TL42RQDLL_getMCUrev"), (Reply{0, "0003010401"}));
  EXPECT_EQ(answer("TL42RQDll_Idn"), (Reply{0, "000C4E464320544C34325251E3D4"}));
  EXPECT_EQ(answer("TL42RQDll_Echo"), (Reply{0, "5500"}));
  EXPECT_EQ(request("TL42RQDll_Select", "010D"), (Reply{0, "0000"}));
  // The ISO 15693 tag of the fixture field answers the one-slot inventory: flags, DSFID, UID
  // least significant byte first, CRC, and the chip's tail 00.
  EXPECT_EQ(request("TL42RQDll_SendReceive", "260100"), (Reply{0, "800D000078563412002A02E0F43D00"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "010803620100"), (Reply{0, "000100"}));
  EXPECT_EQ(answer("TL42RQDll_FieldOff"), (Reply{0, "0000"}));
  EXPECT_EQ(answer("TL42RQDll_ResetSPI"), (Reply{0, "0000"}));
  EXPECT_EQ(answer("TL42RQDll_SendIRQPulse"), (Reply{0, "0000"}));
  EXPECT_EQ(answer("TL42RQDll_SendNSSPulse"), (Reply{0, "0000"}));
  EXPECT_EQ(answer("TL42RQDll_Polling_Reading"), (Reply{0, "0000"}));
  EXPECT_EQ(answer("TL42RQDLL_getInterfacePinState"), (Reply{0, "000101"}));
}

TEST_F(ExportsTest, ReconnectSequencesOfThePanelsAreAccepted) {
  EXPECT_EQ(request("TL42RQDll_Select", "02000180"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "0109043A005804"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "0109046801" "01D1"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "0109110B00241204880F1F3F3F01000505005500"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "010803690100"), (Reply{0, "0001D1"}));
  EXPECT_EQ(request("TL42RQDll_Select", "03010180"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "01 090468010130"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_Select", "0451"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "01090468010150"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "0109040A0102A1"), (Reply{0, "0000"}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "010803690100"), (Reply{0, "000150"}));
  // The script's short text for ISO 14443-A is no whole number of bytes.
  EXPECT_EQ(request("TL42RQDll_Select", "0200110"), (Reply{0, "8200"}));
}

TEST_F(ExportsTest, UnplugAndReplugThroughTheControlInterface) {
  auto setPresent = lib->get<std::int32_t (*)(std::int32_t)>("TL42RQSim_SetBoardPresent");
  ASSERT_EQ(setPresent(0), 0);
  EXPECT_EQ(answer("TL42RQDll_Echo"), (Reply{5, ""}));
  EXPECT_EQ(request("TL42RQDll_KQCmd", "0155"), (Reply{5, ""}));
  EXPECT_EQ(status("TL42RQDLL_USBconnect"), 5);
  EXPECT_EQ(answer("TL42RQDll_GetDLLrev"), (Reply{0, "0.5.0"}));
  ASSERT_EQ(setPresent(1), 0);
  EXPECT_EQ(answer("TL42RQDll_Echo"), (Reply{5, ""}));
  EXPECT_EQ(status("TL42RQDLL_USBconnect"), 0);
  EXPECT_EQ(answer("TL42RQDll_Echo"), (Reply{0, "5500"}));
}

TEST_F(ExportsTest, LoadErrorAndDumpThroughTheControlInterface) {
  auto load = lib->get<std::int32_t (*)(const char*)>("TL42RQSim_LoadField");
  auto lastError = lib->get<const char* (*)()>("TL42RQSim_LastError");
  auto dumpField = lib->get<std::int32_t (*)(char*, std::int32_t)>("TL42RQSim_DumpField");
  EXPECT_EQ(load(R"({"tags": [{"type": "felica"}]})"), 1);
  EXPECT_STREQ(lastError(), "field text: line 1, column 11: tags[0]: the key \"idm\" is missing");
  char out[16];
  const std::int32_t full = dumpField(out, sizeof out);
  EXPECT_EQ(std::string(out), "{\n  \"board\": {\n");
  EXPECT_GT(full, 15);
  std::string whole(static_cast<std::size_t>(full) + 1, '\0');
  EXPECT_EQ(dumpField(whole.data(), full + 1), full);
  whole.resize(static_cast<std::size_t>(full));
  EXPECT_EQ(whole.substr(whole.size() - 14), "  \"tags\": []\n}");
}

}  // namespace
