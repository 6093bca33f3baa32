// Every kind of finding: its example has it and no other, the file beside it has none.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "check/XelCsvCodes.h"
#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvCheck.h"

// What GoogleTest prints of a kind of finding; without it, the bytes of the struct, those that nobody wrote included.
static std::ostream& operator<<(std::ostream& out, const XelCsvCheckCode& code) { return out << code.code; }

namespace {

std::vector<std::string> codesOf(const XelCsvCheckExample& example) {
  TestEnv env;
  DataFile file(example.bytes);
  std::vector<std::string> codes;
  for (const XelCsvFinding& finding : XelCsvCheck(env, file.getName(), example.parameters).collect()) {
    codes.emplace_back(finding.code);
  }
  return codes;
}

class Catalogue : public testing::TestWithParam<XelCsvCheckCode> {};

TEST_P(Catalogue, ExampleHasThisFindingOnceAndNoOther) {
  EXPECT_EQ(codesOf(GetParam().example), std::vector<std::string>{GetParam().code});
}

TEST_P(Catalogue, FileBesideTheExampleHasNoFinding) {
  EXPECT_EQ(codesOf(GetParam().counterExample), std::vector<std::string>{});
}

TEST_P(Catalogue, TextsAreSentencesInOneLineOfAscii) {
  const XelCsvCheckCode& code = GetParam();
  for (const std::string text : {code.title, code.explanation, code.effect, code.remedy}) {
    EXPECT_FALSE(text.empty());
    for (const char byte : text) EXPECT_TRUE(byte >= ' ' && byte <= '~') << text;
    EXPECT_EQ(text.back() == '.', text != code.title) << text;
  }
}

TEST_P(Catalogue, IsFoundByItsCode) { EXPECT_EQ(XelFindCheckCode(GetParam().code)->title, GetParam().title); }

std::string nameOf(const testing::TestParamInfo<XelCsvCheckCode>& info) {
  std::string name;
  for (const char* byte = info.param.code; *byte != '\0'; ++byte) name += *byte == '-' ? '_' : *byte;
  return name;
}

INSTANTIATE_TEST_SUITE_P(EachCode, Catalogue, testing::ValuesIn(XelGetCheckCodes()), nameOf);

}  // namespace

TEST(FindCheckCode, AnswersNullForAnUnknownCode) { EXPECT_EQ(XelFindCheckCode("nonsense"), nullptr); }
