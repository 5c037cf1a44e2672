#include "foundation/build_version.h"
#include "study/describe/json_text.h"
#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

namespace api = corvath::study::api;

using corvath::study::NamedArray;
using corvath::study::Refusal;

namespace corvath::study::api {

std::unique_ptr<zelstudy_result> MakeResult(Result result) {
  std::string json = JsonText(result.document);
  return std::make_unique<zelstudy_result>(zelstudy_result{std::move(result), std::move(json)});
}

std::unique_ptr<zelstudy_result> MakeResult(Json::Value document) {
  Result result;
  result.document = std::move(document);
  return MakeResult(std::move(result));
}

Progress ToProgress(zelstudy_progress progress, void* user) {
  if (progress == nullptr) return {};
  return [progress, user](double share, const std::string& text) {
    return progress(share, text.c_str(), user) == 0;
  };
}

}  // namespace corvath::study::api

const char* zelstudy_last_error() {
  return api::GetLastError();
}

const char* zelstudy_version() {
  return corvath::utils::GetBuildVersion().full_text.c_str();
}

const char* zelstudy_result_json(const zelstudy_result* result) {
  return result == nullptr ? nullptr : result->json.c_str();
}

int zelstudy_result_array(const zelstudy_result* result, const char* name, const double** data,
                          size_t* rows, size_t* columns) {
  return api::Call([&] {
    const auto& arrays = api::Require(result, "result").result.arrays;
    const std::string wanted = &api::Require(name, "name");
    api::Require(data, "data");
    api::Require(rows, "rows");
    api::Require(columns, "columns");
    std::vector<std::string> names;
    for (const NamedArray& array : arrays) {
      names.push_back(array.name);
      if (array.name != wanted) continue;
      *data = array.values.data();
      *rows = array.rows;
      *columns = array.columns;
      return;
    }
    throw Refusal("the result has no array " + corvath::study::Quoted(wanted) + "; " +
                  corvath::study::NameHint(wanted, names, "it has"));
  });
}

const char* zelstudy_result_array_name(const zelstudy_result* result, size_t index) {
  if (result == nullptr || index >= result->result.arrays.size()) return nullptr;
  return result->result.arrays[index].name.c_str();
}

void zelstudy_result_close(zelstudy_result* result) {
  delete result;
}
