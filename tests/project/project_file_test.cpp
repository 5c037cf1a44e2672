#include "project/file/project_file.h"

#include "foundation/text.h"
#include "literature/plate_project.h"
#include "project/file/writer_lock.h"
#include "project/vrdb.h"
#include "support/archive_round_trip.h"
#include "support/temporary_directory.h"
#include "support/testing.h"

#include <boost/filesystem/operations.hpp>
#include <json/json.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;

VRDB Open(const std::string& path) {
  return VRDB(corvath::utils::FromUtf8(path));
}

/// A project whose header text would be built from these meta data.
VRDB ProjectWith(const VRDB::MetaData& meta_data) {
  VRDB project;
  for (const auto& [key, value] : meta_data) project.SetMetaData(key, value);
  return project;
}

std::string WithHeader(std::uint32_t flag, const std::string& text, const std::string& archive) {
  std::ostringstream stream;
  WriteFileHeader(stream, {flag, text});
  return stream.str() + archive;
}

Json::Value Parse(const std::string& text) {
  Json::Value root;
  std::istringstream stream(text);
  stream >> root;
  return root;
}

TEST(ProjectFile, StartsWithMagicFlagAndHeaderText) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("a b.vrdb");
  SaveProjectFile(literature::MakePlateProject(), path);
  const std::string bytes = ReadFile(path);
  EXPECT_EQ(bytes.substr(0, 8), std::string("VRDB\1\0\0\0", 8));
  const std::size_t length =
      static_cast<unsigned char>(bytes[8]) + 256u * static_cast<unsigned char>(bytes[9]);
  EXPECT_EQ(bytes.substr(12 + length, 3), "KBX");

  const VRDB project = Open(path);
  const Json::Value header = Parse(bytes.substr(12, length));
  EXPECT_EQ(header, Parse(project.GetHeader()));
  EXPECT_EQ(header["encoding"], "UTF-8");
  EXPECT_EQ(header["current filename"], "a b.vrdb");
  EXPECT_EQ(header["version"]["vrdb"], 14);
  EXPECT_EQ(header["version"]["file"], 0);
  EXPECT_EQ(header["version"]["stelvanix"]["revision"], -1);
  EXPECT_EQ(header["datetime"]["last write"].asString(), project.GetMetaData(L"last_write_time"));
  EXPECT_EQ(project.GetDesignContainer().size(), 40u);
}

TEST(ProjectFile, HeaderTextIsKeptOrBuilt) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("p.vrdb");
  const std::string archive = Save(VRDB());
  const auto header_of = [&](const std::string& bytes) {
    WriteFile(path, bytes);
    return Open(path).GetHeader();
  };
  const std::string built = header_of(archive);
  EXPECT_EQ(Parse(built)["current filename"], "p.vrdb");
  EXPECT_TRUE(Parse(built)["version"]["stelvanix"].isMember("major"));
  EXPECT_EQ(header_of(WithHeader(0, "{\"thrown\":\"away\"}", archive)), built);
  EXPECT_EQ(header_of(archive + "what follows is not read"), built);

  EXPECT_EQ(header_of(WithHeader(1, "", archive)), "");
  EXPECT_EQ(header_of(WithHeader(7, "no json {", archive)), "no json {");
  EXPECT_EQ(header_of(WithHeader(7, "[1]", archive)), "[1]");
  const std::string deep(5000, '[');
  EXPECT_EQ(header_of(WithHeader(1, deep, archive)), deep);
  const Json::Value kept = Parse(header_of(
      WithHeader(0xffffffff, "{\"k\":{\"n\":-1.5e300},\"current filename\":3}", archive)));
  EXPECT_EQ(kept, Parse("{\"k\":{\"n\":-1.5e300},\"current filename\":\"p.vrdb\"}"));
}

TEST(ProjectFile, VersionTextNeedsThreeNumbers) {
  const auto writer = [](const std::string& text) {
    const VRDB project = ProjectWith({{L"stelvanix version", text}, {L"stelvanix suffix", "s"}});
    return Parse(BuildHeaderText(project, "d/p.vrdb"))["version"]["stelvanix"];
  };
  const Json::Value expected =
      Parse(R"({"major":7,"minor":8,"maintenance":90,"revision":-1,"suffix":"s"})");
  for (const char* text : {"7.8.90", "7.8.90.1", "7.8.90 beta"})
    EXPECT_EQ(writer(text), expected) << text;
  for (const char* text :
       {"", "7.8", "7.8.", "7..8", " 7.8.9", "-7.8.9", "a7.8.9", "7.8.99999999999999999999999"}) {
    EXPECT_EQ(writer(text).size(), 1u) << text;  // the suffix alone
    const Json::Value header =
        Parse(BuildHeaderText(ProjectWith({{L"stelvanix version", text}}), "p"));
    EXPECT_TRUE(header["version"].isMember("file") && header["version"].isMember("vrdb"));
  }
  EXPECT_MESSAGE("No such meta data: stelvanix version",
                 BuildHeaderText(ProjectWith({{L"stelvanix version_full", "1"}}), "p"));
  const Json::Value bare = Parse(BuildHeaderText(VRDB(), "dir/\u00e4.vrdb"));
  EXPECT_EQ(bare["current filename"], "\u00e4.vrdb");
  EXPECT_FALSE(bare.isMember("datetime"));
}

TEST(ProjectFile, SaysWhichFileCannotBeRead) {
  const TemporaryDirectory directory;
  const auto expected = [](const std::string& path) {
    return "Error while reading \"\"" + path + "\"\": invalid stream state while reading";
  };
  const std::string missing = directory.File("none");
  EXPECT_MESSAGE(expected(missing), Open(missing));
  const std::string folder = directory.GetPath().string();
  EXPECT_MESSAGE(expected(folder), Open(folder));
  const std::string pipe = directory.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& other : {pipe, std::string("/dev/zero")})
    EXPECT_MESSAGE(expected(other), Open(other)) << "at once";
  EXPECT_STREQ(GetStatusText(0), "successful");
  EXPECT_STREQ(GetStatusText(6), "invalid header found");
  EXPECT_STREQ(GetStatusText(7), "unknown");
}

TEST(ProjectFile, ShortFilesEndInAnArchiveException) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("p");
  const auto fails = [&](const std::string& bytes) {
    WriteFile(path, bytes);
    EXPECT_THROW(Open(path), boost::archive::archive_exception) << bytes.size();
  };
  for (const std::string& bytes :
       {std::string(), std::string("VR"), std::string("KBX"), std::string("VRDB"),
        std::string("VRDB\1\0\0\0", 8), std::string("VRDB\1\0\0\0\xff\xff\xff\xff{}", 14),
        std::string("PK\3\4 something else altogether"), WithHeader(1, "{}", "")})
    fails(bytes);
}

TEST(ProjectFile, AFailedSaveLeavesTheOldFileAndNoOther) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("p.vrdb");
  WriteFile(path, "old");
  VRDB project = literature::MakePlateProject();
  project.SetMetaData(std::wstring(1, wchar_t(0xd800)), "no character");
  EXPECT_THROW(SaveProjectFile(project, path), std::domain_error);
  EXPECT_EQ(ReadFile(path), "old");
  const boost::filesystem::directory_iterator files(directory.GetPath());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);

  const std::string nowhere = directory.File("no/such/p.vrdb");
  EXPECT_MESSAGE("Error while writing \"\"" + nowhere + "\"\": No such file or directory",
                 SaveProjectFile(VRDB(), nowhere));
  EXPECT_NE(MessageOf([&] { SaveProjectFile(VRDB(), directory.GetPath()); }), "");
  const std::string pipe = directory.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_NE(MessageOf([&] { SaveProjectFile(VRDB(), pipe); }).find("no regular file"),
            std::string::npos);
  EXPECT_EQ(boost::filesystem::status(pipe).type(), boost::filesystem::fifo_file);
}

TEST(ProjectFile, SavingKeepsModeAndSymbolicLink) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("p.vrdb");
  const std::string link = directory.File("link");
  WriteFile(path, "old");
  ::chmod(path.c_str(), 0440);
  boost::filesystem::create_symlink("p.vrdb", link);
  SaveProjectFile(VRDB(), link, {/*outer_header=*/false});
  EXPECT_TRUE(boost::filesystem::is_symlink(link));
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777u, 0440u);
  EXPECT_EQ(ReadFile(path).substr(0, 3), "KBX");
  for (const char* target : {"missing.vrdb", "circle"}) {
    const std::string odd = directory.File(target[0] == 'm' ? "dangling" : "circle");
    boost::filesystem::create_symlink(target, odd);
    EXPECT_EQ(target[0] == 'c',
              !MessageOf([&] { SaveProjectFile(VRDB(), odd, {/*outer_header=*/false}); }).empty());
    EXPECT_TRUE(boost::filesystem::is_symlink(odd));
  }
  EXPECT_EQ(ReadFile(directory.File("missing.vrdb")).substr(0, 3), "KBX");

  const std::string fresh = directory.File("50%.vrdb");
  const mode_t old_mask = ::umask(027);
  SaveProjectFile(VRDB(), fresh);
  ::umask(old_mask);
  ASSERT_EQ(::stat(fresh.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777u, 0640u);
  EXPECT_EQ(Open(link).GetAlgorithmInfo()->GetType(), 22);
}

TEST(WriterLock, MakesWritersWaitButNotForLongAndReadersNever) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("p.vrdb");
  SaveProjectFile(VRDB(), path);
  const auto num_files = [&] {
    const boost::filesystem::directory_iterator files(directory.GetPath());
    return std::distance(begin(files), end(files));
  };
  EXPECT_EQ(num_files(), 1) << "no lock stays behind";

  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const WriterLock lock(path);
    ::alarm(60);  // should the test end before it ends the child
    if (::write(ready[1], "", 1) != 1) ::_exit(1);
    for (;;) ::pause();
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  Open(path);
  EXPECT_MESSAGE("Error while writing \"\"" + path + "\"\": process " + std::to_string(child) +
                     " is writing it (waited 0 s)",
                 WriterLock(path, std::chrono::milliseconds(50)));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ::close(ready[0]);
  ::close(ready[1]);
  SaveProjectFile(VRDB(), path);  // takes over what the killed process left
  EXPECT_EQ(num_files(), 1);
}

}  // namespace
