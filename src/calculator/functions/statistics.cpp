#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/functions/reductions.h"
#include "variant/operators/power_mean.h"

// Statistics of numbers and signals.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

void PowerMean(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  fn::powmean(result, signal, call.Unsigned(1));
}

void PowerMeanOfDifference(FunctionCall& call, Value& result) {
  const Value first = call.Evaluate(0);
  const Value second = call.Evaluate(1);
  fn::powmeandev(result, first, second, call.Unsigned(2));
}

}  // namespace

void AddStatisticsFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  AddUnary(table, Group::kStatistics,
           {
               {L"sum", Unary<fn::sum>},
               {L"mean", Unary<fn::mean>},
               {L"stddev", Unary<fn::stddev>},
           });
  table.Add(Group::kStatistics, {L"rms"}, {1}, Unary<fn::rms>);
  table.Add(Group::kStatistics, {L"rmsdev"}, {2}, Binary<fn::rmsdev>);
  table.Add(Group::kStatistics, {L"powmean"}, {2}, PowerMean);
  table.Add(Group::kStatistics, {L"powmeandev"}, {3}, PowerMeanOfDifference);
}

void AddStatisticsHelp(HelpTable& table) {
  const auto per_row = [&](const wchar_t* name, const wchar_t* text) {
    table[name] = {
        {std::wstring(name) + L"(x)",
         std::wstring(text) + L" Of a matrix for each row, of a signal for each channel.",
         {X(L"The numbers.")}}};
  };
  per_row(L"sum", L"Sum of the numbers.");
  per_row(L"mean", L"Mean of the numbers.");
  per_row(L"stddev", L"Standard deviation of the numbers.");
  const ArgumentHelp signal = S(L"The signal.");
  const ArgumentHelp other{L"T", kReal, kSignals, false, L"The signal to compare with."};
  const ArgumentHelp power = Number(L"q", L"The power, an integer from 1 on.");
  table[L"rms"] = {{L"rms(S)", L"Root mean square of each channel over the abscissa.", {signal}}};
  table[L"rmsdev"] = {
      {L"rmsdev(S, T)", L"Root mean square of the difference of two signals.", {signal, other}}};
  table[L"powmean"] = {
      {L"powmean(S, q)", L"q-th root of the mean of the q-th powers.", {signal, power}}};
  table[L"powmeandev"] = {{L"powmeandev(S, T, q)",
                           L"q-th root of the mean of the q-th powers of the difference.",
                           {signal, other, power}}};
}

}  // namespace corvath::calculator
