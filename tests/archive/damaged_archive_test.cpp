#include "support/archive_round_trip.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

namespace corvath::test {

/// Counts its objects, so that a leak shows without a sanitizer.
struct Counted {
  Counted() { ++alive; }
  Counted(const Counted&) { ++alive; }
  ~Counted() { --alive; }
  static inline int alive = 0;
};

struct Shape {
  virtual ~Shape() = default;
  virtual double Area() const = 0;
  template <class Archive>
  void serialize(Archive&, unsigned int) {}
};

struct Circle : Shape {
  Counted counted;
  double radius_ = 1.0;
  std::vector<double> marks_;
  double Area() const override { return radius_; }
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& boost::serialization::make_nvp("Shape", boost::serialization::base_object<Shape>(*this));
    ar& BOOST_SERIALIZATION_NVP(radius_) & BOOST_SERIALIZATION_NVP(marks_);
  }
};

struct Square : Shape {
  Counted counted;
  std::wstring name_ = L"square";
  double Area() const override { return static_cast<double>(name_.size()); }
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& boost::serialization::make_nvp("Shape", boost::serialization::base_object<Shape>(*this));
    ar& BOOST_SERIALIZATION_NVP(name_);
  }
};

/// Another family, so that a pointer can point to the wrong one.
struct Animal {
  Counted counted;
  virtual ~Animal() = default;
  virtual int Legs() const { return legs_; }
  std::int32_t legs_ = 4;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(legs_);
  }
};

struct Zoo {
  std::vector<boost::shared_ptr<Shape>> shapes_;
  std::map<std::wstring, boost::shared_ptr<Animal>> animals_;
  boost::shared_ptr<Circle> best_;
  std::vector<std::vector<double>> tables_;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(shapes_) & BOOST_SERIALIZATION_NVP(animals_);
    ar& BOOST_SERIALIZATION_NVP(best_) & BOOST_SERIALIZATION_NVP(tables_);
  }
  /// Touches every object through its virtual functions.
  double Visit() const {
    double sum = 0.0;
    for (const auto& shape : shapes_)
      if (shape) sum += shape->Area();
    for (const auto& [name, animal] : animals_)
      if (animal) sum += animal->Legs();
    return best_ ? sum + best_->Area() : sum;
  }
};

/// A chain of any length.
struct Link {
  Counted counted;
  boost::shared_ptr<Link> next_;
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(next_);
  }
};

}  // namespace corvath::test

ZEL_EXPORT_KEY(corvath::test::Circle, "test::Circle")
ZEL_EXPORT_KEY(corvath::test::Square, "test::Square")
ZEL_EXPORT_KEY(corvath::test::Animal, "test::Animal")
ZEL_EXPORT_IMPLEMENT(corvath::test::Circle)
ZEL_EXPORT_IMPLEMENT(corvath::test::Square)
ZEL_EXPORT_IMPLEMENT(corvath::test::Animal)
ZEL_TRACK_ALWAYS(corvath::test::Zoo)

namespace corvath::test {
namespace {

Zoo MakeZoo() {
  Zoo zoo;
  const auto circle = boost::make_shared<Circle>();
  circle->marks_ = {1.0, 2.0, 3.0};
  const auto cat = boost::make_shared<Animal>();
  zoo.shapes_ = {circle, boost::make_shared<Square>(), circle, nullptr,
                 boost::make_shared<Square>()};
  zoo.animals_ = {{L"cat", cat}, {L"none", nullptr}, {L"tom", cat}};
  zoo.best_ = circle;
  zoo.tables_ = {{1.0}, {}, {2.0, 3.0}};
  return zoo;
}

/// Whatever the bytes are: reads a zoo that can be used, or ends in an exception of the archive.
void TryToRead(const std::string& bytes) {
  const int alive = Counted::alive;
  try {
    Zoo zoo;
    support::LoadInto(bytes, zoo, archive::kSilentOnMismatch);
    zoo.Visit();
  } catch (const boost::archive::archive_exception&) {
  }
  EXPECT_EQ(Counted::alive, alive) << "leaked";
}

TEST(DamagedArchive, SharedPointersStayShared) {
  const auto zoo = support::Load<Zoo>(support::Save(MakeZoo()));
  ASSERT_EQ(zoo.shapes_.size(), 5u);
  EXPECT_EQ(zoo.shapes_[0], zoo.shapes_[2]);
  EXPECT_EQ(zoo.best_, zoo.shapes_[0]);
  EXPECT_EQ(zoo.shapes_[3], nullptr);
  EXPECT_EQ(zoo.animals_.at(L"cat"), zoo.animals_.at(L"tom"));
  EXPECT_EQ(zoo.Visit(), MakeZoo().Visit());
}

TEST(DamagedArchive, EveryCutEndsInAnException) {
  const std::string bytes = support::Save(MakeZoo());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    Zoo zoo;
    EXPECT_THROW(support::LoadInto(bytes.substr(0, size), zoo, archive::kSilentOnMismatch),
                 boost::archive::archive_exception)
        << size;
  }
  EXPECT_EQ(Counted::alive, 0);
}

TEST(DamagedArchive, NoFlippedByteDoesHarm) {
  const std::string bytes = support::Save(MakeZoo(), archive::kAnnotateNothing);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    for (int value = 0; value < 256; ++value) {
      std::string damaged = bytes;
      damaged[i] = static_cast<char>(value);
      TryToRead(damaged);
    }
}

TEST(DamagedArchive, AnEndlessChainOfPointersIsRefused) {
  const auto read_back = [](int length) {
    Link head;
    for (Link* last = &head; length > 0; --length) {
      last->next_ = boost::make_shared<Link>();
      last = last->next_.get();
    }
    Link read;
    support::LoadInto(support::Save(head), read);
    int links = 0;
    for (const Link* link = &read; link->next_; link = link->next_.get()) ++links;
    return links;
  };
  EXPECT_EQ(read_back(900), 900);
  EXPECT_THROW(read_back(1100), boost::archive::archive_exception);
  EXPECT_EQ(Counted::alive, 0);
}

TEST(DamagedArchive, AbsurdCountsAreRefusedBeforeAllocation) {
  const std::vector<std::vector<double>> tables{{1.0, 2.0}};
  const std::string bytes = support::Save(tables, archive::kAnnotateNothing);
  // Behind the header stand tracking, version and the count 1; replace it.
  const std::size_t count = 8 + 4;
  ASSERT_EQ(bytes.substr(count, 2), std::string("\x01\0", 2));
  const std::string huge = bytes.substr(0, count) +
                           std::string("\x00\x80\x00\x80\x00\x80\x00\x10", 8) +  // 2^57
                           bytes.substr(count + 2);
  std::vector<std::vector<double>> read;
  EXPECT_THROW(support::LoadInto(huge, read), boost::archive::archive_exception);
  Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(2, 2);
  std::string body = support::Save(matrix);
  body.replace(8 + 4, 4, std::string("\x00\xC0\x00\x00\x00\xC0\x00\x00", 8));  // 16384 x 16384
  EXPECT_THROW(support::LoadInto(body, matrix), boost::archive::archive_exception);
}

}  // namespace
}  // namespace corvath::test
