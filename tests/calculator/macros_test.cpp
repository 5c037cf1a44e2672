#include "calculator/builtin_macros.h"
#include "calculator/calculator.h"
#include "calculator/macro_file.h"
#include "foundation/text.h"
#include "support/environment_variables.h"
#include "support/temporary_directory.h"
#include "support/values.h"

#include <boost/archive/xml_oarchive.hpp>
#include <boost/serialization/list.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>

/// The form of the file as Boost's own headers give it.
template <class Archive>
void serialize(Archive& ar, CalculatorTypeTraits::Macro& macro, unsigned int) {
  ar& boost::serialization::make_nvp("macro_id_", macro.macro_id_);
  ar& boost::serialization::make_nvp("arg_names_", macro.arg_names_);
  ar& boost::serialization::make_nvp("expression_", macro.expression_);
  ar& boost::serialization::make_nvp("description_", macro.description_);
  ar& boost::serialization::make_nvp("category_", macro.category_);
}

namespace corvath::calculator {
namespace {

using Macro = CalculatorTypeTraits::Macro;
using Macros = CalculatorTypeTraits::Macros;
using support::MessageOf, support::ReadFile, support::WriteFile;

bool Same(const Macros& a, const Macros& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Macro& x, const Macro& y) {
    return x.macro_id_ == y.macro_id_ && x.arg_names_ == y.arg_names_ &&
           x.expression_ == y.expression_ && x.description_ == y.description_ &&
           x.category_ == y.category_;
  });
}

std::string BoostForm(const Macros& macros) {
  std::ostringstream stream;
  {
    boost::archive::xml_oarchive archive(stream);
    archive << boost::serialization::make_nvp("macros", macros);
  }
  return stream.str();
}

const Macros kMacros{
    {L"twice", {L"x"}, L"2*x", L"Two times x", L"mine"},
    {L"area_between",
     {L"__c", L"__r", L"__r2"},
     L"#if __r<__r2 #then area(__c,__r,__r2) #else 0",
     L"<area> & \"more\"",
     L""},
    {L"none", {L""}, L"4", L"", L""},
    {L"no_names", {}, L"5", L"", L""},
};

class MacroFile : public testing::Test {
 protected:
  std::string Write(const std::string& bytes) const {
    const std::string path = directory_.File("macros.def");
    WriteFile(path, bytes);
    return path;
  }

  support::TemporaryDirectory directory_;
};

TEST_F(MacroFile, IsTheArchiveOfASetOfMacros) {
  const std::string path = directory_.File("macros.def");
  SaveMacros(path, kMacros);
  EXPECT_EQ(ReadFile(path), BoostForm(kMacros));
  EXPECT_TRUE(Same(LoadMacros(Write(BoostForm(kMacros))), kMacros));
  SaveMacros(path, {});
  EXPECT_EQ(ReadFile(path), BoostForm({}));
  EXPECT_TRUE(LoadMacros(path).empty());
  EXPECT_EQ(ReadMacroFile(path).problem, "");
}

TEST_F(MacroFile, KeepsTextsAsTheyAre) {
  const std::string path = directory_.File("macros.def");
  std::wstring every_kind = L"  a\tb\r\nc\n \u00e4\u221e\U0001f527 ]]> &amp; <x/> '\" ";
  for (wchar_t c = 1; c < 0x20; ++c) every_kind += c;
  const Macros macros{{L"gr\u00f6\u00dfe", {L"l\u00e4nge", L" "}, every_kind, every_kind, L"\n"}};
  SaveMacros(path, macros);
  const MacroFileContent content = ReadMacroFile(path);
  EXPECT_EQ(content.problem, "");
  EXPECT_TRUE(content.exists);
  EXPECT_TRUE(Same(content.macros, macros));
  const std::string before = ReadFile(path);
  EXPECT_MESSAGE("invalid input character",
                 SaveMacros(path, {{std::wstring(1, 0xd800), {}, L"", L"", L""}}));
  EXPECT_EQ(ReadFile(path), before);
}

TEST_F(MacroFile, OfACutFileTheMacrosBeforeTheCutCount) {
  const std::string whole = BoostForm(kMacros);
  std::vector<std::size_t> ends;  // of the items, whose own items are deeper
  for (std::size_t i = 0; (i = whole.find("\n\t</item>", i)) != std::string::npos; ++i)
    ends.push_back(i + 9);
  ASSERT_EQ(ends.size(), kMacros.size());
  for (std::size_t length = 0; length < whole.size(); length += 3) {
    const Macros read = LoadMacros(Write(whole.substr(0, length)));
    const auto complete = static_cast<std::size_t>(
        std::count_if(ends.begin(), ends.end(), [&](std::size_t end) { return end <= length; }));
    ASSERT_TRUE(Same(
        read, Macros(kMacros.begin(), std::next(kMacros.begin(), static_cast<long>(complete)))))
        << length;
  }
}

TEST_F(MacroFile, WhatIsNoMacroFileGivesNoMacros) {
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n"
      "<!DOCTYPE boost_serialization>\n"
      "<boost_serialization signature=\"serialization::archive\" version=\"18\">\n";
  const std::string item = "<item class_id=\"1\" tracking_level=\"0\" version=\"0\">";
  const std::string set = head + "<macros class_id=\"0\" tracking_level=\"0\" version=\"0\">";
  const auto field = [&](const std::string& tag, const std::string& text) {
    return "<" + tag + ">" + text + "</" + tag + ">";
  };
  const std::string files[] = {
      "",
      "PK\x03\x04" + std::string(1000, '\0'),
      "<?xml version=\"1.0\"?><html><body>macros</body></html>",
      head + "</boost_serialization>\n",
      set + field("count", "1000000000000000000") + field("item_version", "0"),
      set + field("count", "-1") + field("item_version", "0") + "</macros>",
      set + field("count", "2") + field("item_version", "0") + item + field("macro_id_", "m") +
          "<arg_names_ class_id=\"2\">" + field("count", "99999999999999"),
      // Names longer than ours, and one that does not end.
      set + field(std::string(100000, 'x'), "1"),
      set + "<" + std::string(100000, 'x'),
      // A text that ends within a character, and one that is the character NUL.
      set + field("count", "1") + field("item_version", "0") + item + field("macro_id_", "m\xc3"),
      set + field("count", "1") + field("item_version", "0") + item + field("macro_id_", "&#0;"),
      set + "<count>1",
      // A set that is tracked, but has no number: what is looked for was never read.
      head + "<macros class_id=\"0\" tracking_level=\"1\" version=\"0\">" + field("count", "0") +
          field("item_version", "0") + "</macros></boost_serialization>\n",
      std::string(100000, '<'),
      std::string((std::size_t{1} << 24) + 1, ' '),
  };
  for (const std::string& file : files) {
    const MacroFileContent content = ReadMacroFile(Write(file));
    EXPECT_TRUE(content.exists);
    EXPECT_TRUE(content.macros.empty()) << file.substr(0, 400);
    EXPECT_NE(content.problem, "") << file.substr(0, 400);
    EXPECT_TRUE(LoadMacros(directory_.File("macros.def")).empty());
  }
  EXPECT_TRUE(LoadMacros(directory_.GetPath()).empty());
  EXPECT_EQ(ReadMacroFile(directory_.GetPath()).problem, "not a regular file");
  EXPECT_TRUE(LoadMacros(directory_.File("none")).empty());
  EXPECT_FALSE(ReadMacroFile(directory_.File("none")).exists);
}

TEST_F(MacroFile, TheUsersLiesInTheApplicationDataDirectory) {
  const support::UserDirectoryVariables variables;
  EXPECT_TRUE(LoadMacros().empty());  // there is no such directory
  EXPECT_MESSAGE("Environment variable \"APPDATA\" doesn't exist.", SaveMacros({}, kMacros));
  const std::string home = directory_.File("home");
  setenv("HOME", home.c_str(), 1);
  EXPECT_TRUE(LoadMacros().empty());
  SaveMacros({}, kMacros);  // makes the directories
  EXPECT_TRUE(Same(LoadMacros(home + "/.config/Corvath/calculator/macros.def"), kMacros));
  EXPECT_TRUE(Same(LoadMacros(), kMacros));
  setenv("APPDATA", directory_.File("roaming").c_str(), 1);
  EXPECT_TRUE(LoadMacros().empty());
}

TEST_F(MacroFile, AFailedSaveLeavesNothingBehind) {
  const std::string place = directory_.File("macros.def");
  WriteFile(directory_.File("file"), "");
  boost::filesystem::create_directory(place);  // what cannot be replaced
  EXPECT_EQ(MessageOf([&] { SaveMacros(place, kMacros); }).find("Error while writing"), 0u);
  EXPECT_EQ(MessageOf([&] {
              SaveMacros(directory_.File("file") + "/no/macros.def", kMacros);
            }).find("Error while writing"),
            0u);
  boost::filesystem::directory_iterator entry(directory_.GetPath());
  EXPECT_EQ(std::distance(entry, boost::filesystem::directory_iterator()), 2);
}

using corvath::utils::ToUtf8;
using support::Scalar, support::Sig, support::Value, support::Vec, support::XY;

class BuiltinMacros : public testing::Test {
 protected:
  BuiltinMacros() {
    const std::vector<support::Complex> axis{0, 1, 3, 4};
    calculator_.SetObject(L"S", L"", XY(axis, {2, -1, 5, 1}));
    calculator_.SetObject(L"T", L"", XY(axis, {1, 1, 2, 0}));  // S - T is 1, -2, 3, 1
    calculator_.SetObject(L"R", L"", XY({0, 1, 3}, {1, 3, 7}));
    calculator_.SetObject(L"U", L"", XY({0.5, 1, 2}, {0, 0, 0}));
    calculator_.SetObject(L"M", L"", Sig({0, 1, 2}, {{1, 2, 3}, {10, 20, 30}}));
  }

  CCalculator calculator_;
};

TEST_F(BuiltinMacros, AFileCannotChangeThemButATextCan) {
  calculator_.AddMacros(
      {{L"SIG_SUM", {L"x"}, L"0", L"", L""}, {L"mine", {L"x"}, L"3*x", L"", L""}});
  EXPECT_EQ(calculator_.Evaluate(L"$SIG_SUM(S)"), Scalar(7));
  EXPECT_EQ(calculator_.Evaluate(L"$mine(2)"), Scalar(6));
  calculator_.Evaluate(L"$SIG_SUM(x) = 0*size2(x)");
  EXPECT_EQ(calculator_.Evaluate(L"$SIG_SUM(S)"), Scalar(0));
}

}  // namespace
}  // namespace corvath::calculator
