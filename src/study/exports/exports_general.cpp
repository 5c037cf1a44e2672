#include "foundation/build_version.h"
#include "study/exports/call_frame.h"

namespace api = corvath::study::api;

const char* zelstudy_last_error() {
  return api::GetLastError();
}
const char* zelstudy_version() {
  return corvath::utils::GetBuildVersion().full_text.c_str();
}

// The functions below are declared already and follow one by one.
namespace {
int NotYet() {
  return api::Call([] { throw std::runtime_error("this function is not there yet"); });
}
}  // namespace
const char* zelstudy_result_json(const zelstudy_result*) {
  return nullptr;
}
int zelstudy_result_array(const zelstudy_result*, const char*, const double**, size_t*, size_t*) {
  return NotYet();
}
const char* zelstudy_result_array_name(const zelstudy_result*, size_t) {
  return nullptr;
}
void zelstudy_result_close(zelstudy_result*) {}
int zelstudy_table_new(zelstudy_table**) {
  return NotYet();
}
int zelstudy_table_add_numbers(zelstudy_table*, const char*, const double*, size_t) {
  return NotYet();
}
int zelstudy_table_add_texts(zelstudy_table*, const char*, const char* const*, size_t) {
  return NotYet();
}
int zelstudy_table_set_unit(zelstudy_table*, const char*, const char*) {
  return NotYet();
}
int zelstudy_table_read_csv(const char*, const char*, zelstudy_table**) {
  return NotYet();
}
int zelstudy_table_describe(const zelstudy_table*, zelstudy_result**) {
  return NotYet();
}
void zelstudy_table_close(zelstudy_table*) {}
int zelstudy_project_open(const char*, const char*, zelstudy_project**) {
  return NotYet();
}
int zelstudy_project_from_bytes(const void*, size_t, zelstudy_project**) {
  return NotYet();
}
int zelstudy_project_bytes(const zelstudy_project*, const void**, size_t*) {
  return NotYet();
}
int zelstudy_project_save(const zelstudy_project*, const char*) {
  return NotYet();
}
void zelstudy_project_close(zelstudy_project*) {}
int zelstudy_train(const zelstudy_table*, const char*, zelstudy_progress, void*, zelstudy_project**,
                   zelstudy_result**) {
  return NotYet();
}
int zelstudy_describe(const zelstudy_project*, const char*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_residuals(const zelstudy_project*, const char*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_solve(const zelstudy_project*, const char*, const double*, size_t, zelstudy_progress,
                   void*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_solve_csv(const zelstudy_project*, const char*, zelstudy_progress, void*,
                       zelstudy_result**) {
  return NotYet();
}
int zelstudy_sample(const zelstudy_project*, const char*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_schemes(zelstudy_result**) {
  return NotYet();
}
int zelstudy_evaluate(const char*, const char*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_functions(zelstudy_result**) {
  return NotYet();
}
int zelstudy_help(const char*, zelstudy_result**) {
  return NotYet();
}
int zelstudy_macros(zelstudy_result**) {
  return NotYet();
}
int zelstudy_hash(const char*, zelstudy_result**) {
  return NotYet();
}
