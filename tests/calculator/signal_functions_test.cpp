#include "calculator/calculator_fixture.h"
#include "foundation/text.h"
#include "support/temporary_directory.h"
#include "variant/signals/filters.h"
#include "variant/signals/fourier.h"
#include "variant/signals/modal.h"
#include "variant/signals/peaks.h"

namespace {

namespace fn = corvath::math::functions;
using corvath::math::Value;
using corvath::utils::FromUtf8, corvath::utils::ToUtf8;
using support::Mat, support::Scalar, support::Sig, support::Vec, support::XY;

class SignalFunctions : public support::CalculatorFixture {
 protected:
  SignalFunctions() {
    calculator_.SetObject(L"S", L"", uneven_);
    calculator_.SetObject(L"T", L"", even_);
    calculator_.SetObject(L"nan", L"", Scalar(std::nan("")));
    calculator_.SetObject(L"y", L"", Vec({0, 1, 0, 1, 0}));
    calculator_.SetObject(L"A", L"", Mat({{1, 2}, {3, 4}, {5, 7}}));
    calculator_.SetObject(L"B", L"", Mat({{1, 2}, {2, 2}, {5, 1}}));
  }

  void Expect(const std::wstring& text, const std::function<void(Value&)>& call) {
    Value expected;
    call(expected);
    ExpectValue(text, expected);
  }

  /// Not equidistant, so that interpolation and end slopes matter.
  const Value uneven_ = Sig({0, 0.5, 1, 1.5, 2, 3}, {{1, 2, 0, 4, 1, 3}, {2, 7, 1, 8, 2, 8}});
  const Value even_ = XY({0, 1, 2, 3, 4}, {3, 1, 4, 1, 5});
};

TEST_F(SignalFunctions, TextsReachFiltersWithTheirArgumentsInOrder) {
  // Each argument differs from its neighbours of the same type.
  const std::wstring tail = L"SPLINE,0.5,0.25,CONSTANT,ZERO,true)";
  Expect(L"butterworthFilter(S,0.3,3,HIGHPASS," + tail, [&](Value& r) {
    fn::butterworthFilter(r, uneven_, Scalar(0.3), 3, 1, 0, 0.5, 0.25, 1, 0, true);
  });
  Expect(L"sineButterworthFilter(S,[0.2,0.4],2,BANDSTOP," + tail, [&](Value& r) {
    fn::sineButterworthFilter(r, uneven_, Vec({0.2, 0.4}), 2, 3, 0, 0.5, 0.25, 1, 0, true);
  });
  Expect(L"besselFilter(S,0.3,2,LOWPASS,LINEAR,0,0,ZERO,CONSTANT,false)",
         [&](Value& r) { fn::besselFilter(r, uneven_, Scalar(0.3), 2, 0, 1, 0, 0, 0, 1, false); });
  Expect(L"chebyOneFilter(S,0.3,0.6,3,HIGHPASS," + tail, [&](Value& r) {
    fn::chebyOneFilter(r, uneven_, Scalar(0.3), 0.6, 3, 1, 0, 0.5, 0.25, 1, 0, true);
  });
  Expect(L"chebyTwoFilter(S,[0.2,0.4],0.6,3,BANDPASS," + tail, [&](Value& r) {
    fn::chebyTwoFilter(r, uneven_, Vec({0.2, 0.4}), 0.6, 3, 2, 0, 0.5, 0.25, 1, 0, true);
  });
  Expect(L"saeFilter(S,0.3," + tail,
         [&](Value& r) { fn::saeFilter(r, uneven_, Scalar(0.3), 0, 0.5, 0.25, 1, 0, true); });
  Expect(L"decimateFilter(S,2,3,SPLINE,0.5,0.25)",
         [&](Value& r) { fn::decimateFilter(r, uneven_, 2, 3, 0, 0.5, 0.25); });
  Expect(L"smoothFilter(S,2)", [&](Value& r) { fn::smoothFilter(r, uneven_, 2); });
  // The object that the filter worked on is as before.
  ExpectValue(L"S", uneven_);
}

TEST_F(SignalFunctions, TextsReachTransformsPeaksAndModalMeasures) {
  Expect(L"fft(T)", [&](Value& r) { fn::fft(r, even_); });
  Expect(L"fft(S,SPLINE,0.5,0.25)", [&](Value& r) { fn::fft(r, uneven_, 0, 0.5, 0.25); });
  Expect(L"ifft(T)", [&](Value& r) { fn::ifft(r, even_); });
  Expect(L"ifft(S,SPLINE,0.5,0.25)", [&](Value& r) { fn::ifft(r, uneven_, 0, 0.5, 0.25); });
  Expect(L"fftshift(T)", [&](Value& r) { fn::fftshift(r, even_); });
  Expect(L"ifftshift(T)", [&](Value& r) { fn::ifftshift(r, even_); });
  Expect(L"fft2d(A)", [&](Value& r) { fn::fft2d(r, Mat({{1, 2}, {3, 4}, {5, 7}})); });
  Expect(L"ifft2d(A)", [&](Value& r) { fn::ifft2d(r, Mat({{1, 2}, {3, 4}, {5, 7}})); });

  const Value a = Evaluate(L"A");
  const Value b = Evaluate(L"B");
  Expect(L"mac(A,B)", [&](Value& r) { fn::mac(r, a, b); });
  Expect(L"comac(A,B)", [&](Value& r) { fn::comac(r, a, b); });
  Expect(L"sdi(A,B)", [&](Value& r) { fn::sdi(r, a, b); });
  Expect(L"modepairs(A,B,0.5)", [&](Value& r) { fn::modepairs(r, a, b, Scalar(0.5)); });
}

TEST_F(SignalFunctions, WrongArgumentsAreNamedByTheirPlace) {
  // From the second argument on: of those that must be real scalars a number, "true" for a truth
  // value, "" for a cut-off, whose kind the filter tests.
  using Arguments = std::vector<std::string>;
  const std::pair<std::string, Arguments> signatures[] = {
      {"butterworthFilter", {"", "2", "0", "1", "0", "0", "0", "0", "true"}},
      {"sineButterworthFilter", {"", "2", "0", "1", "0", "0", "0", "0", "true"}},
      {"besselFilter", {"", "2", "0", "1", "0", "0", "0", "0", "true"}},
      {"chebyOneFilter", {"", "0.5", "2", "0", "1", "0", "0", "0", "0", "true"}},
      {"chebyTwoFilter", {"", "0.5", "2", "0", "1", "0", "0", "0", "0", "true"}},
      {"saeFilter", {"", "1", "0", "0", "0", "0", "true"}},
      {"decimateFilter", {"2", "2", "1", "0", "0"}},
      {"smoothFilter", {"1"}},
      {"fft", {"1", "0", "0"}},
      {"ifft", {"1", "0", "0"}},
      {"peaks", {"1", "0", "0", "1"}},
      {"minpeaks", {"1", "0", "0", "1"}},
  };
  const char* const ordinals[] = {"2nd", "3rd", "4th", "5th",  "6th",
                                  "7th", "8th", "9th", "10th", "11th"};
  for (const auto& [name, arguments] : signatures)
    for (std::size_t wrong = 0; wrong < arguments.size(); ++wrong) {
      if (arguments[wrong].empty()) continue;
      for (const std::string value : {arguments[wrong] == "true" ? "1" : "true", "i", "[1,2]"}) {
        std::string text = "1+" + name + "(T";
        for (std::size_t i = 0; i < arguments.size(); ++i)
          text += "," + (i == wrong ? value : arguments[i].empty() ? "0.1" : arguments[i]);
        EXPECT_EQ(Failure(FromUtf8(text + ")")),
                  std::string(ordinals[wrong]) + " argument wrong in function " + name + "@2")
            << text;
      }
    }
}

TEST_F(SignalFunctions, ReadTables) {
  const support::TemporaryDirectory folder;
  const auto read = [&](const std::string& file, const std::string& skipped = "") {
    return "read(\"" + folder.File(file) + "\"" + skipped + ")";
  };
  const std::string name = ToUtf8(L"größe.txt");
  support::WriteFile(folder.File(name), "time value\r\n0 1\r\n1 2\r\n1 3\r\n");
  ExpectValue(FromUtf8(read(name)), Mat({{0, 1}, {1, 2}, {1, 3}}));
  ExpectValue(FromUtf8(read(name, ",\"2\"")), Mat({{1, 2}, {1, 3}}));
  support::WriteFile(folder.File("header"), "time value\n");
  ExpectValue(FromUtf8(read("header")), Value());
  support::WriteFile(folder.File("empty"), "");
  ExpectValue(FromUtf8(read("empty")), Value());
  for (const char* lines : {",\"-1\"", ",\"1.5\"", ",\"99999999999999999999\""})
    EXPECT_EQ(Failure(FromUtf8(read("empty", lines))), "Unsigned integer constant expected@0");
  EXPECT_EQ(Failure(FromUtf8(read("empty", ",1"))),
            "Wrong argument type. Quoted string expected.@0");
  // The file system's own words.
  EXPECT_NE(Failure(FromUtf8(read(std::string(300, 'x')))).find("File name too long"),
            std::string::npos);
}

}  // namespace
