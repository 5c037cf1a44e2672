#include "calculator/calculator_fixture.h"
#include "calculator/parser.h"
#include "calculator/workspace.h"
#include "foundation/math_exception.h"
#include "foundation/text.h"
#include "support/small_stack.h"

namespace {

using corvath::math::Value;
using corvath::utils::ToUtf8;
using support::Mat, support::Scalar, support::Sig, support::Vec;

class Calculator : public support::CalculatorFixture {
 protected:
  Calculator() {
    calculator_.SetObject(L"a", L"", Scalar(2.0));
    calculator_.SetObject(L"b", L"", Scalar(3.0));
    calculator_.SetObject(L"v", L"", Vec({10.0, 11.0, 12.0, 13.0, 14.0}));
    calculator_.SetObject(L"m", L"", Mat({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}));
    calculator_.SetObject(L"S", L"", Sig({0.0, 1.0, 2.0}, {{5.0, 6.0, 7.0}, {8.0, 9.0, 10.0}}));
  }
};

TEST_F(Calculator, ErrorsShowTheTextAndACaretUnderThePlace) {
  EXPECT_ERROR(CExpressionPositionException, "Invalid type BOOLEAN for operation +.\n1+true\n ^",
               Evaluate(L"1 + true"));
  EXPECT_MESSAGE("Error while parsing", Evaluate(L"if"));  // at the text's end
  EXPECT_ERROR(corvath::math::CTypeException, "Input object not of type BOOLEAN.",
               Evaluate(L"#if 1 #then 2 #else 3"));
}

// What assignments come to stands in texts.txt.
TEST_F(Calculator, ObjectsKeepTheirTexts) {
  Evaluate(L"x = y = a + 1");
  EXPECT_EQ(calculator_.GetObject(L"x").expression, L"a+1");
  EXPECT_EQ(calculator_.GetObject(L"y").value, Scalar(3.0));
  calculator_.SetObject(L"own", L"max(own = 5, 1)", Value());  // assigns the object itself
  ExpectValue(L"own + own", Scalar(10.0));
  EXPECT_EQ(calculator_.GetObject(L"own").expression, L"max(own = 5, 1)");
  EXPECT_EQ(Failure(L"new = new + 1"), "Object \"new\" not known.");
  EXPECT_EQ(calculator_.GetObjectState(L"new"), corvath::calculator::kUnknown);
}

TEST_F(Calculator, KeepsObjectsByName) {
  EXPECT_EQ(calculator_.GetObjectState(L"a"), corvath::calculator::kDefined);
  EXPECT_EQ(calculator_.GetObjectState(L"Pi"), corvath::calculator::kImmutable);
  EXPECT_EQ(calculator_.GetObject(L"pi").name, L"@PI");
  EXPECT_FALSE(calculator_.FindObject(L"A"));  // case counts
  EXPECT_ERROR(CCalculatorObjectUnknownException, "Object \"A\" not known.",
               calculator_.GetObject(L"A"));
  for (const wchar_t* name : {L"PI", L"@PI"})
    EXPECT_ERROR(CCalculatorException, "Can't overwrite immutable object \"" + ToUtf8(name) + "\"",
                 calculator_.SetObject(name, L"", Scalar(3.0)));
  for (const wchar_t* name : {L"", L"1x", L"if", L"a+b", L"f(1)", L"\"s\"", L"x[1]", L"a=b"})
    EXPECT_MESSAGE("Invalid identifier: \"" + ToUtf8(name) + "\"",
                   calculator_.SetObject(name, L"", Scalar(3.0)));
  EXPECT_TRUE(calculator_.IsValidIdentifier(L"pi", false));
  EXPECT_FALSE(calculator_.IsValidIdentifier(L"pi", true));
  EXPECT_TRUE(calculator_.IsValidIdentifier(L"größe'.1", true));  // in the C locale, too
}

TEST_F(Calculator, FindsCircularDependencies) {
  calculator_.SetObject(L"p", L"a + q", Value());
  calculator_.SetObject(L"q", L"sin(r)", Value());
  EXPECT_FALSE(calculator_.HasCircularDependency(L"p + q + unknown"));
  calculator_.SetObject(L"r", L"2 + p", Value());
  EXPECT_TRUE(calculator_.HasCircularDependency(L"1 + p"));
  EXPECT_FALSE(calculator_.HasCircularDependency(L"a"));
  EXPECT_ERROR(CCircularDependencyException, "object p depends on expression dependent on p",
               calculator_.GetDependencies(L"p"));
  for (const wchar_t* again : {L"1 + r", L"1 + r"})
    EXPECT_ERROR(CCircularDependencyException, "object r depends on expression dependent on r",
                 Evaluate(again));
}

TEST_F(Calculator, MacrosOfOneNameKeepTheFirst) {
  Evaluate(L"$m(x) = x + 1");
  CalculatorTypeTraits::Macro macro;
  macro.macro_id_ = L"m";
  macro.arg_names_ = {L"x"};
  macro.expression_ = L"0";
  calculator_.AddMacros({macro});
  ExpectValue(L"$m(a)", Scalar(3.0));  // the first of a name stays
  macro.macro_id_ = L"broken";
  macro.expression_ = L"+ x";
  calculator_.AddMacros({macro});
  EXPECT_EQ(Failure(L"$broken(1)"), "Error determining object positions@0");
}

TEST_F(Calculator, AFailedTextLeavesNothingAndFailsAgain) {
  const auto size = [&] { return calculator_.GetWorkspace().texts.size(); };
  const std::size_t before = size();
  EXPECT_EQ(Failure(L"1 + + x"), Failure(L"1 + + x"));
  EXPECT_EQ(size(), before);
  Evaluate(L"v [ 1 ]");
  Evaluate(L"v[1]");
  EXPECT_EQ(size(), before + 1);  // one text
}

TEST_F(Calculator, TakesTextsWithoutEnd) {
  auto& workspace = calculator_.GetWorkspace();
  workspace.texts.SetMaxLength(2000);
  Evaluate(L"$m(x) = x + live");
  Evaluate(L"live = a + 1");
  for (int i = 0; i < 1000; ++i) {
    const std::wstring n = std::to_wstring(i);
    ExpectValue(L"#if true #then $m(" + n + L") #else n" + n, Scalar(i + 3.0));
  }
}

TEST_F(Calculator, HostileTextsEndInExceptions) {
  const auto repeat = [](const std::wstring& text, int n) {
    std::wstring result;
    for (int i = 0; i < n; ++i) result += text;
    return result;
  };
  const std::string too_long = "Expression texts of more than ";
  // Long but harmless.
  ExpectValue(L"0" + repeat(L"+1", 100000), Scalar(100000.0));
  ExpectValue(L"size([0" + repeat(L",1", 100000) + L"])", Scalar(100001.0));
  ExpectValue(repeat(L"(", 400) + L"7" + repeat(L")", 400), Scalar(7.0));
  ExpectValue(repeat(L"-(", 300) + L"7" + repeat(L")", 300), Scalar(7.0));
  EXPECT_EQ(Failure(repeat(L"(", 300000) + L"7" + repeat(L")", 300000)).substr(0, 49),
            "Expressions are nested too deep inside each other");
  // What fits 8 MB is too deep for the thread of a host that is sparing with them.
  support::RunOnStack(std::size_t{64} << 10, [&] {
    ExpectValue(L"1+(2*(3))", Scalar(7.0));
    EXPECT_EQ(Failure(repeat(L"-(", 300) + L"7" + repeat(L")", 300)).substr(0, 49),
              "Expressions are nested too deep inside each other");
  });
  EXPECT_EQ(Failure(std::wstring(corvath::calculator::kMaxTextLength + 1, L'1')).find(too_long),
            0u);
  // Values that grow.
  calculator_.GetWorkspace().max_entries = 10000;
  calculator_.SetObject(L"big", L"", Evaluate(L"linspace(1,4000,4000)"));
  ExpectValue(L"max(big+big+big+big+big)", Scalar(20000.0));  // objects that stay in place
  for (const wchar_t* text : {L"[big,big,big]", L"vector(big,big,big)", L"-big+-big+-big+-big",
                              L"((-big+(-big))+(-big))*(-big)", L"x = y = z = big"})
    EXPECT_EQ(Failure(text), "Values of more than 10000 numbers at a time") << ToUtf8(text);
  for (const wchar_t* text : {L"linspace(0,1,1e18)", L"outerprod(linspace(0,1,1e5),big)"})
    EXPECT_EQ(Failure(text).find("gives"), std::string::npos) << ToUtf8(text);
  // Products and inverses whose results are small beside the work.
  calculator_.SetObject(L"wide", L"", Evaluate(L"outerprod(linspace(1,60,60),linspace(1,60,60))"));
  ExpectValue(L"(wide*wide)[0,0]", Scalar(60.0 * 61.0 * 121.0 / 6.0));
  calculator_.GetWorkspace().max_steps = 800;  // 60^3 multiplications are 843 steps
  for (const wchar_t* text :
       {L"wide*wide", L"1*wide*wide", L"matrixmult(wide,wide)", L"invert(wide)", L"mac(wide,wide)"})
    EXPECT_EQ(Failure(text), "Evaluation of more than 800 steps") << ToUtf8(text);
  calculator_.GetWorkspace().max_steps = 1000000;
  // A chain of objects, none of them circular, and one that doubles at each level.
  for (int i = 0; i < 3000; ++i) {
    calculator_.SetObject(L"o" + std::to_wstring(i), L"o" + std::to_wstring(i + 1) + L"+1",
                          Value());
    calculator_.SetObject(L"d" + std::to_wstring(i),
                          L"d" + std::to_wstring(i + 1) + L"+d" + std::to_wstring(i + 1), Value());
  }
  EXPECT_EQ(Failure(L"o0"), "Expressions are nested too deep inside each other");
  EXPECT_MESSAGE("Expressions are nested too deep inside each other",
                 calculator_.GetDependencies(L"o0"));
  calculator_.SetObject(L"d60", L"", Scalar(1.0));
  const std::string too_many = "Evaluation of more than 1000000 steps";
  EXPECT_EQ(Failure(L"d0"), too_many);
  calculator_.SetObject(L"d60", L"", calculator_.GetObject(L"big").value);
  calculator_.GetWorkspace().max_entries = 1000000;
  EXPECT_EQ(Failure(L"d0"), too_many);  // after fewer steps of more numbers
  EXPECT_EQ(calculator_.GetDependencies(L"d0").size(), 61u);
  // Macros that call themselves.
  for (const wchar_t* text :
       {L"$r(x) = $r(x)", L"$r(x) = $r(x+x)", L"$r(x) = (1+$r(x))*2", L"$r(x) = $q(x)"}) {
    Evaluate(L"$q(x) = 1+$r(x)");
    Evaluate(text);
    EXPECT_THROW(Evaluate(L"$r(1)"), CCircularDependencyException) << text;
  }
  Evaluate(L"$f(n) = #if n<2 #then 1 #else (n)*$f((n)-1)");
  ExpectValue(L"$f(5)", Scalar(120.0));  // one that ends is none of them
}

}  // namespace
