#include "solver/solver_provider.h"

#include "foundation/text.h"
#include "literature/plate_project.h"
#include "project/file/project_file.h"
#include "solver/file_signature.h"
#include "solver/zel_solver.h"
#include "support/temporary_directory.h"
#include "support/testing.h"

namespace corvath::zel {
namespace {

constexpr char kMismatch[] = "File seems to be corrupt. Signature is invalid or missing";
constexpr char kNotOpened[] = "Initializing new solver failed.";

class SolverProvider : public testing::Test {
 protected:
  SolverProvider() {
    algorithm::datatypes::SaveProjectFile(literature::MakePlateProject(),
                                          directory_.File("p.vrdb"));
  }

  std::wstring Path(const std::string& name = "p.vrdb") {
    return utils::FromUtf8(directory_.File(name));
  }
  std::string Refusal(const std::wstring& path, const std::optional<std::string>& signature) {
    return support::MessageOf([&] { provider_.GetSolver(path, signature, false); });
  }

  support::TemporaryDirectory directory_;
  ZELSolverProvider provider_;
};

TEST_F(SolverProvider, KeepsOneSolverPerSpellingOfAPath) {
  const auto solver = provider_.GetSolver(Path(), {}, false);
  EXPECT_EQ(provider_.GetSolver(Path(), {}, false), solver);

  std::wstring backslashes = Path();
  std::replace(backslashes.begin(), backslashes.end(), L'/', L'\\');
  EXPECT_EQ(provider_.GetSolver(backslashes, {}, false), solver);

  EXPECT_NE(provider_.GetSolver(Path("./p.vrdb"), {}, false), solver);
  EXPECT_NE(provider_.GetSolver(Path(), {}, /*allow_missing_models=*/true), solver);
}

TEST_F(SolverProvider, DoesNotLookAtAnOpenFileAgain) {
  const auto solver = provider_.GetSolver(Path(), {}, false);
  support::WriteFile(directory_.File("p.vrdb"), "something else");
  EXPECT_EQ(provider_.GetSolver(Path(), {}, false), solver);
  provider_.Clear();
  EXPECT_NE(Refusal(Path(), {}), "");
  EXPECT_EQ(solver->GetInputNames(), literature::kPlateInputs) << "an owner outlives the registry";
}

TEST_F(SolverProvider, TiesAPathToTheSignatureOfItsOpening) {
  const std::string signature = FileSignature(Path());
  std::string upper = signature;
  std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);

  EXPECT_EQ(Refusal(Path(), {}), "");
  EXPECT_EQ(Refusal(Path(), signature), kMismatch) << "opened without";
  provider_.Clear();
  EXPECT_EQ(Refusal(Path(), signature), "");
  EXPECT_EQ(Refusal(Path(), {}), kMismatch) << "opened with";
  EXPECT_EQ(Refusal(Path(), upper), kMismatch);
  EXPECT_EQ(Refusal(Path(), signature + " "), kMismatch);
  EXPECT_EQ(Refusal(Path(), signature), "");
}

TEST_F(SolverProvider, StaysOpenUnderTheTrueSignatureAfterAWrongOne) {
  const std::string signature = FileSignature(Path());
  for (const std::string wrong : {"", "0"}) {
    provider_.Clear();
    EXPECT_EQ(Refusal(Path(), wrong), kMismatch);
    support::WriteFile(directory_.File("moved"), support::ReadFile(directory_.File("p.vrdb")));
    boost::filesystem::remove(directory_.File("p.vrdb"));  // so that loading again would fail
    EXPECT_EQ(Refusal(Path(), {}), kMismatch);
    EXPECT_EQ(Refusal(Path(), signature), "");
    boost::filesystem::rename(directory_.File("moved"), directory_.File("p.vrdb"));
  }
}

TEST_F(SolverProvider, ForgetsAPathThatDidNotOpen) {
  EXPECT_EQ(Refusal(Path("missing.vrdb"), {}), kNotOpened);
  EXPECT_EQ(Refusal(Path("missing.vrdb"), "00"), kNotOpened);
  EXPECT_EQ(Refusal(utils::FromUtf8(directory_.GetPath().string()), {}), kNotOpened);
  EXPECT_EQ(Refusal(L"", {}), kNotOpened);
  boost::filesystem::copy_file(directory_.File("p.vrdb"), directory_.File("missing.vrdb"));
  EXPECT_EQ(Refusal(Path("missing.vrdb"), {}), "");
}

}  // namespace
}  // namespace corvath::zel
