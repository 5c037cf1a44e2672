#include "calculator/builtin_macros.h"

#include "foundation/until_unload.h"

#include <list>
#include <string>

namespace corvath::calculator {

namespace {

using Names = std::list<std::wstring>;

CalculatorTypeTraits::Macros MakeBuiltinMacros() {
  const Names signal{L"__c"};
  const Names slot{L"__c", L"__r", L"__r2"};
  const Names signal_integer{L"__c", L"__i"};
  const Names slot_integer{L"__c", L"__r", L"__r2", L"__i"};
  const Names signals{L"__c", L"__c2"};
  const Names signals_slot{L"__c", L"__c2", L"__r", L"__r2"};
  const Names signals_integer{L"__c", L"__c2", L"__i"};
  const Names signals_slot_integer{L"__c", L"__c2", L"__r", L"__r2", L"__i"};
  const Names signal_position{L"__c", L"__r"};
  CalculatorTypeTraits::Macros macros;
  const auto add = [&](const wchar_t* name, const Names& parameters, const wchar_t* body) {
    macros.insert({name, parameters, body, L"", L""});
  };
  add(L"SIG_MIN_X", signal, L"min(__c)[0]");
  add(L"SIG_MIN_X_SLOT", slot, L"min(window(__c,__r,__r2))[0]");
  add(L"SIG_MIN_Y", signal, L"min(__c)[1]");
  add(L"SIG_MIN_Y_SLOT", slot, L"min(window(__c,__r,__r2))[1]");
  add(L"SIG_MAX_X", signal, L"max(__c)[0]");
  add(L"SIG_MAX_X_SLOT", slot, L"max(window(__c,__r,__r2))[0]");
  add(L"SIG_MAX_Y", signal, L"max(__c)[1]");
  add(L"SIG_MAX_Y_SLOT", slot, L"max(window(__c,__r,__r2))[1]");
  add(L"SIG_Y_RANGE", signal, L"max(__c)[1]-min(__c)[1]");
  add(L"SIG_Y_RANGE_SLOT", slot, L"max(window(__c,__r,__r2))[1]-min(window(__c,__r,__r2))[1]");
  add(L"SIG_MEAN", signal, L"mean(__c)");
  add(L"SIG_MEAN_SLOT", slot, L"mean(window(__c,__r,__r2))");
  add(L"SIG_STDDEV", signal, L"stddev(__c)");
  add(L"SIG_STDDEV_SLOT", slot, L"stddev(window(__c,__r,__r2))");
  add(L"SIG_RMS", signal, L"rms(__c)");
  add(L"SIG_RMS_SLOT", slot, L"rms(window(__c,__r,__r2))");
  add(L"SIG_SUM", signal, L"sum(__c)");
  add(L"SIG_SUM_SLOT", slot, L"sum(window(__c,__r,__r2))");
  add(L"SIG_EUCLID", signal, L"euklidnorm(__c)");
  add(L"SIG_EUCLID_SLOT", slot, L"euklidnorm(window(__c,__r,__r2))");
  add(L"SIG_NORM", signal_integer, L"norm(__c,__i)");
  add(L"SIG_NORM_SLOT", slot_integer, L"norm(window(__c,__r,__r2),__i)");
  add(L"SIG_DIFF_EUCLID", signals, L"euklidnorm(__c-__c2)");
  add(L"SIG_DIFF_EUCLID_SLOT", signals_slot, L"euklidnorm(window(__c-__c2,__r,__r2))");
  add(L"SIG_DIFF_NORM", signals_integer, L"norm(__c-__c2,__i)");
  add(L"SIG_DIFF_NORM_SLOT", signals_slot_integer, L"norm(window(__c-__c2,__r,__r2),__i)");
  add(L"SIG_INT", signal, L"area(__c)");
  add(L"SIG_INT_SLOT", slot, L"area(__c,__r,__r2)");
  add(L"SIG_DIFF_INT", signals, L"area(__c-__c2)");
  add(L"SIG_DIFF_INT_SLOT", signals_slot, L"area(__c-__c2,__r,__r2)");
  add(L"SIG_VALUE_Y", signal_position, L"interpolate(__c,[__r],LINEAR,0,0)[0,0]");
  add(L"SIG_VALUE_FIRST_Y", signal, L"(__c[0])[1]");
  add(L"SIG_VALUE_LAST_Y", signal, L"(__c[size2(__c)-1])[1]");
  add(L"SIG_VALUE_X", signal_position,
      L"interpolate(xydata(extract(__c,1),extract(__c,0)),[__r],LINEAR,0,0)[0,0]");
  add(L"SIG_VALUE_FIRST_X", signal, L"(__c[0])[0]");
  add(L"SIG_VALUE_LAST_X", signal, L"(__c[size2(__c)-1])[0]");
  add(L"SIG_SIZE", signal, L"size2(__c)");
  add(L"SIG_SLOT_SIZE", slot, L"size2(window(__c,__r,__r2))");
  add(L"SIG_DIFF_SIZE", signals, L"size2(__c-__c2)");
  add(L"SIG_DIFF_SLOT_SIZE", signals_slot, L"size2(window(__c-__c2,__r,__r2))");
  add(L"SIG_ABL_DIFF_NORM", signals_integer, L"norm(derive(__c,FORWARD)-derive(__c2,FORWARD),__i)");
  add(L"SIG_ABL_DIFF_NORM_SLOT", signals_slot_integer,
      L"norm(derive(window(__c,__r,__r2),FORWARD)-derive(window(__c2,__r,__r2),FORWARD),__i)");
  add(L"RESAMPLING", signal_integer,
      L"interpolate(__c,linspace((__c[0])[0],(__c[size2(__c)-1])[0],__i),LINEAR,0,0)");
  add(L"ACCUMULATE_CHANNELS", signal,
      L"sum(transpose(extract(__c,linspace(1,size1(__c),size1(__c)))))");
  add(L"APPEND_XYDATA", signals,
      L"xydata(vector(extract(__c,0),extract(__c2,0)),vector(extract(__c,1),extract(__c2,1)))");
  add(L"SIG_MAP_2_SIGNALS", signals, L"interpolate(__c,lct(__c,__c2),LINEAR,0,0)");
  add(L"ABSOLUTE_ERROR", signals, L"abs(__c-__c2)");
  add(L"RELATIVE_ERROR", signals, L"$ABSOLUTE_ERROR(__c,__c2)/abs(__c)");
  add(L"PERCENT_ERROR", signals, L"100*$RELATIVE_ERROR(__c,__c2)");
  return macros;
}

utils::UntilUnload<CalculatorTypeTraits::Macros> builtin_macros;

}  // namespace

const CalculatorTypeTraits::Macros& GetBuiltinMacros() {
  return builtin_macros.Get(MakeBuiltinMacros);
}

}  // namespace corvath::calculator
