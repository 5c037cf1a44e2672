#include "doe/doe.h"
#include "support/archive_round_trip.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

namespace {

using namespace corvath::math;

/// Has the stored form of a DOE, with texts and rows that a DOE would never write.
struct StoredDoe {
  std::uint64_t numdimensions_ = 2;
  DOE::Designs designs_;
  std::string saved_generator;

  template <class Archive>
  void serialize(Archive& ar, unsigned int /*version*/) {
    ar& BOOST_SERIALIZATION_NVP(numdimensions_);
    ar& BOOST_SERIALIZATION_NVP(designs_);
    ar& BOOST_SERIALIZATION_NVP(saved_generator);
  }
};

TEST(DoeArchive, ALoadedGeneratorContinuesTheSequence) {
  for (const int type :
       {kPlainMonteCarlo, kLatinHypercube, kLatinHypercubeMidpoint, kOrthogonalLatinHypercube,
        kSpaceFillingLatinHypercube, kAdvancedLatinHypercube, kFeketePoints, kSobolSequence}) {
    DOE doe(3, 17);
    doe.Build(type, 11, false);
    DOE loaded = support::Load<DOE>(support::Save(doe));
    EXPECT_EQ(loaded.GetDim(), 3U);
    EXPECT_EQ(loaded.GetDesigns(), doe.GetDesigns());
    for (DOE* object : {&doe, &loaded}) object->Build(type, 12, true);
    EXPECT_EQ(loaded.GetDesigns(), doe.GetDesigns()) << type;
    EXPECT_EQ(loaded.GetDesigns().size(), 23U);
  }
}

TEST(DoeArchive, StoresTheEngineAsItsNumbers) {
  // The state of a Mersenne Twister that made no number yet, by its published recurrence. Of the
  // first number only the leading bit is part of the state.
  std::ostringstream text;
  std::uint32_t word = 17;
  for (std::uint32_t i = 0; i < 624; ++i) {
    if (i > 0) word = 1812433253U * (word ^ word >> 30) + i;
    if (i > 0) text << ' ' << word;
  }
  StoredDoe stored;
  support::LoadInto(support::Save(DOE(2, 17)), stored);
  EXPECT_EQ(stored.numdimensions_, 2U);
  const std::size_t first = stored.saved_generator.find(' ');
  EXPECT_EQ(stored.saved_generator.substr(first), text.str());
  EXPECT_EQ(std::stoul(stored.saved_generator.substr(0, first)) >> 31, 0U);  // as that of 17
  stored.designs_ = {{1.0, 2.0}};
  DOE loaded;
  support::LoadInto(support::Save(stored), loaded);
  loaded.Build(kPlainMonteCarlo, 5, false);
  DOE fresh(2, 17);
  fresh.Build(kPlainMonteCarlo, 5, false);
  EXPECT_EQ(loaded.GetDesigns(), fresh.GetDesigns());
}

TEST(DoeArchive, RefusesDamage) {
  StoredDoe whole;
  support::LoadInto(support::Save(DOE(2, 17)), whole);
  DOE target;
  StoredDoe ragged = whole;
  ragged.designs_ = {{1.0, 2.0}, {3.0}};
  EXPECT_THROW(support::LoadInto(support::Save(ragged), target), std::exception);
  for (const std::string& text :
       {std::string(), std::string("1 2 3"), std::string("x"),
        whole.saved_generator.substr(0, whole.saved_generator.size() / 2)}) {
    StoredDoe damaged = whole;
    damaged.saved_generator = text;
    EXPECT_THROW(support::LoadInto(support::Save(damaged), target), std::exception) << text;
  }
}

TEST(DoeArchive, HasItsNameAndKeysAndNoStates) {
  EXPECT_STREQ(boost::serialization::guid<DOE>(), "::corvath::math::DOE");
  const auto doe = boost::make_shared<DOE>(2, 17);
  const std::string bytes = support::Save(doe, 0x2000);  // keys as text
  std::size_t position = 0;
  for (const char* key : {"numdimensions_", "designs_", "saved_generator"}) {
    position = bytes.find(key, position);
    EXPECT_NE(position, std::string::npos) << key;
  }
  boost::shared_ptr<DOE> loaded;
  support::LoadInto(support::Save(doe), loaded);
  ASSERT_TRUE(loaded);
  DOE target(2, 1, {Eigen::VectorXd{{7.0}}, Eigen::VectorXd{{7.0}}});
  support::LoadInto(support::Save(*doe), target);
  for (DOE* object : {doe.get(), loaded.get(), &target}) object->Build(kPlainMonteCarlo, 3, false);
  EXPECT_EQ(loaded->GetDesigns(), doe->GetDesigns());
  EXPECT_EQ(target.GetDesigns(), doe->GetDesigns());
  // Another number of dimensions has no use for the lists either.
  DOE wider(2, 1, {Eigen::VectorXd{{7.0}}, Eigen::VectorXd{{7.0}}});
  wider.SetMatrix(Eigen::MatrixXd(0, 3));
  wider.Build(kFullFactorial, 2, false);
  EXPECT_EQ(wider.GetDesigns().size(), 8U);
}

}  // namespace
