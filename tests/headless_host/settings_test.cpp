#include "host/settings.h"

#include <string>

#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

using HostSettings = HostTest;

TEST_F(HostSettings, AMissingValueIsTheFallback) {
  EXPECT_EQ(GetIntTavlor(u"ZENTAL", u"Units", 7, kUserDataStore, nullptr), 7);
}

TEST_F(HostSettings, AStoredValueIsGivenWhateverTheFallback) {
  SetHostSetting(u"ZENTAL", u"Units", -3);
  EXPECT_EQ(GetIntTavlor(u"ZENTAL", u"Units", 7, kUserDataStore, nullptr), -3);
  EXPECT_EQ(GetIntTavlor(u"KORBIN", u"Units", 7, kUserDataStore, nullptr), 7);
}

TEST_F(HostSettings, WhatTheFilterWritesCanBeReadBack) {
  EXPECT_EQ(HostSetting(u"TexTCompose", u"PointJustify"), std::nullopt);
  WriteIntTavlor(u"TexTCompose", u"PointJustify", 5, kUserDataStore);
  EXPECT_EQ(HostSetting(u"TexTCompose", u"PointJustify"), 5);
}

TEST_F(HostSettings, AResetForgetsEverySetting) {
  SetHostSetting(u"a", u"b", 1);
  ResetHost();
  EXPECT_EQ(HostSetting(u"a", u"b"), std::nullopt);
}

TEST_F(HostSettings, UnitsAre300AtTheStartAndFollowTheFilter) {
  EXPECT_EQ(GetUnits(), 300);
  SetHostUnits(301);
  EXPECT_EQ(GetUnits(), 301);
  UdateUnits(300);
  EXPECT_EQ(HostUnits(), 300);
}

TEST_F(HostSettings, TheBaseFolderIsCutToItsBuffer) {
  char16_t buffer[261];
  for (const std::size_t length : {std::size_t{258}, std::size_t{259}, std::size_t{260}}) {
    buffer[260] = u'!';
    SetHostBaseDir(std::u16string(length, u'd'));
    LoadBaseDir(buffer);
    EXPECT_EQ(std::u16string(buffer), std::u16string(length < 259 ? length : 259, u'd'));
    EXPECT_EQ(buffer[260], u'!');
  }
}

TEST_F(HostSettings, TheBaseFolderAtTheStartIsTheSystemsTemporaryFolder) {
  char16_t buffer[260];
  LoadBaseDir(buffer);
  EXPECT_EQ(std::filesystem::path(buffer), std::filesystem::temp_directory_path());
}
