#include "archive/other_copies.h"
#include "project/file/project_file.h"
#include "project/vrdb.h"
#include "solver/file_signature.h"
#include "solver/zel_solver.h"
#include "study/describe/project_document.h"
#include "study/describe/residuals.h"
#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"

#include <pthread.h>

namespace api = corvath::study::api;

using corvath::study::Options;
using corvath::study::Project;
using corvath::study::Refusal;
using corvath::study::Result;
using corvath::zel::ZELSolver;

namespace {

/// While the library is loaded: it may not be the only copy of its classes in the process, and a
/// fork must not find their caches in use.
struct Loading {
  Loading() {
    corvath::archive::KeepLoadedWithOtherCopies(boost::serialization::guid<ZELSolver>());
    is_loaded = true;
    pthread_atfork(
        [] {
          if (is_loaded) ZELSolver::GetNamesMutex().lock();
        },
        [] {
          if (is_loaded) ZELSolver::GetNamesMutex().unlock();
        },
        [] {
          if (!is_loaded) return;
          ZELSolver::RenewErrorsMutex();
          ZELSolver::GetNamesMutex().unlock();
        });
  }
  ~Loading() { is_loaded = false; }
  inline static bool is_loaded = false;
};
const Loading loading;

std::unique_ptr<zelstudy_project> Make(Project project) {
  return std::make_unique<zelstudy_project>(zelstudy_project{std::move(project)});
}

}  // namespace

int zelstudy_project_open(const char* path, const char* hash, zelstudy_project** out) {
  return api::CallFor(out, [&] {
    return Make(Project::OpenWithBytes(&api::Require(path, "path"), hash == nullptr ? "" : hash));
  });
}

int zelstudy_project_from_bytes(const void* bytes, size_t size, zelstudy_project** out) {
  return api::CallFor(out, [&] {
    const auto* const begin = &api::Require(static_cast<const char*>(bytes), "bytes");
    return Make(Project::FromBytes(std::string(begin, size), "the bytes"));
  });
}

int zelstudy_project_bytes(const zelstudy_project* project, const void** bytes, size_t* size) {
  return api::Call([&] {
    const auto all = api::Require(project, "project").project.GetBytes();
    api::Require(bytes, "bytes");
    api::Require(size, "size");
    *bytes = all.data();
    *size = all.size();
  });
}

int zelstudy_project_save(const zelstudy_project* project, const char* path) {
  return api::Call([&] {
    const auto bytes = api::Require(project, "project").project.GetBytes();
    const std::string file = &api::Require(path, "path");
    try {
      corvath::algorithm::datatypes::SaveProjectBytes(bytes, file);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      throw Refusal(error.what());
    }
  });
}

void zelstudy_project_close(zelstudy_project* project) {
  delete project;
}

int zelstudy_describe(const zelstudy_project* project, const char* options, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Project& described = api::Require(project, "project").project;
    const Options wanted(options, {"candidates", "models"});
    Result result;
    result.document =
        ProjectDocument(described, wanted.GetBool("candidates"), wanted.GetBool("models"));
    AddProjectArrays(described, result);
    return api::MakeResult(std::move(result));
  });
}

int zelstudy_residuals(const zelstudy_project* project, const char* options,
                       zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Project& described = api::Require(project, "project").project;
    const Options wanted(options, {"responses"});
    const auto& all = described.GetOutputs();
    return api::MakeResult(Residuals(
        described,
        wanted.Has("responses") ? wanted.GetSelection("responses", all, "response") : all));
  });
}

int zelstudy_hash(const char* path, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const std::string file = &api::Require(path, "path");
    Json::Value document;
    try {
      document["hash"] = corvath::zel::FileSignature(corvath::utils::FromUtf8(file));
    } catch (const std::runtime_error& error) {
      throw Refusal(file + ": " + error.what());
    }
    return api::MakeResult(std::move(document));
  });
}
