#include "project.h"

#include "commands.h"
#include "foundation/text.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace cli {

Project OpenProject(const std::string& file, const std::string& hash) {
  // The library tells the reason of a failed opening in its log alone.
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) throw Refusal(file + ": " + std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw Refusal(file + ": is a directory");
  return Project(file, hash);
}

corvath::algorithm::datatypes::VRDB ReadRecord(const Project& project) {
  return corvath::algorithm::datatypes::VRDB(corvath::utils::FromUtf8(project.GetPath()));
}

}  // namespace cli
