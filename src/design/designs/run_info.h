#pragma once

#include "archive/serialization.h"

#include <cstdint>
#include <list>
#include <string>

namespace corvath::algorithm::datatypes {

/// One message of a design's run.
class RunInfoMeta {
 public:
  /// Classes of messages that this library writes or reads a meaning into; a file may hold others.
  enum eRunInfo : std::int32_t {
    UNUSABLE_RESPONSE = 103,  ///< a response is uninitialised or not a number
    CRITERION_SIDE_FAILED = 209,
    CRITERION_VALUE_FAILED = 210,
    NOT_STARTED = 501,  ///< in old files, where one code told the state
    RUNNING = 502       ///< likewise
  };

  RunInfoMeta() = default;
  explicit RunInfoMeta(eRunInfo run_info) : run_info_(run_info) {}
  /// Whoever reports, the response concerned or "", and the lines of the message.
  RunInfoMeta(eRunInfo run_info, std::wstring actor_name, std::wstring response_name,
              std::list<std::wstring> message);

  eRunInfo GetRunInfo() const { return run_info_; }
  /// The step of the workflow that reports.
  const std::wstring& GetActorName() const { return actor_name_; }
  /// The response concerned.
  const std::wstring& GetResponseName() const { return response_name_; }
  /// Lines of the message.
  const std::list<std::wstring>& GetMessage() const { return message_; }

  bool operator==(const RunInfoMeta& other) const;
  bool operator!=(const RunInfoMeta& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  eRunInfo run_info_ = eRunInfo();
  std::wstring actor_name_;
  std::wstring response_name_;
  std::list<std::wstring> message_;
};

/// The messages of a design's run, in the order in which they arose.
class RunInfoContainer {
 public:
  void Add(RunInfoMeta message) { run_infos_.push_back(std::move(message)); }
  void Clear() { run_infos_.clear(); }
  bool IsEmpty() const { return run_infos_.empty(); }
  const std::list<RunInfoMeta>& GetMessages() const { return run_infos_; }

  bool operator==(const RunInfoContainer& other) const { return run_infos_ == other.run_infos_; }
  bool operator!=(const RunInfoContainer& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::list<RunInfoMeta> run_infos_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::RunInfoMeta, 1)
ZEL_CLASS_VERSION(corvath::algorithm::datatypes::RunInfoContainer, 1)
