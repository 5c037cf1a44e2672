#pragma once

#include "study/progress.h"
#include "study/project/project.h"
#include "study/result.h"
#include "study/table/memory_table.h"
#include "zelsolver/study.h"

#include <memory>
#include <string>

struct zelstudy_table {
  corvath::study::MemoryTable table;
};

struct zelstudy_project {
  corvath::study::Project project;
};

struct zelstudy_result {
  corvath::study::Result result;
  std::string json;
};

namespace corvath::study::api {

std::unique_ptr<zelstudy_result> MakeResult(Result result);
std::unique_ptr<zelstudy_result> MakeResult(Json::Value document);

/// The caller's progress function as the classes take it; empty for a null pointer.
Progress ToProgress(zelstudy_progress progress, void* user);

}  // namespace corvath::study::api
