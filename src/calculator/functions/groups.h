#pragma once

#include "calculator/function_help.h"
#include "calculator/function_table.h"

/// What each group's file gives: its functions and the help records of all of them. Internal.
namespace corvath::calculator {

void AddElementaryFunctions(FunctionTable& table);
void AddElementaryHelp(HelpTable& table);
void AddStatisticsFunctions(FunctionTable& table);
void AddStatisticsHelp(HelpTable& table);
void AddComplexFunctions(FunctionTable& table);
void AddComplexHelp(HelpTable& table);
void AddLinearAlgebraFunctions(FunctionTable& table);
void AddLinearAlgebraHelp(HelpTable& table);
void AddModalFunctions(FunctionTable& table);
void AddModalHelp(HelpTable& table);
void AddConstructorFunctions(FunctionTable& table);
void AddConstructorHelp(HelpTable& table);
void AddSignalFunctions(FunctionTable& table);
void AddSignalHelp(HelpTable& table);
void AddPeakFunctions(FunctionTable& table);
void AddPeakHelp(HelpTable& table);
void AddFilterFunctions(FunctionTable& table);
void AddFilterHelp(HelpTable& table);
void AddFourierFunctions(FunctionTable& table);
void AddFourierHelp(HelpTable& table);
void AddTableFunctions(FunctionTable& table);
void AddTableHelp(HelpTable& table);
void AddQueryFunctions(FunctionTable& table);
void AddQueryHelp(HelpTable& table);

}  // namespace corvath::calculator
