#include "api/call_frame.h"

#include "foundation/exception.h"
#include "support/testing.h"

#include <new>
#include <thread>

namespace corvath::zel::api {
namespace {

TEST(CallFrame, TurnsWhateverIsThrownIntoStatusAndText) {
  const auto answer = [](auto exception) {
    const int status = Call([&] { throw exception; });
    return std::to_string(status) + " " + GetLastError();
  };
  EXPECT_EQ(answer(std::runtime_error("no file")), "2 no file");
  std::thread([] { EXPECT_STREQ(GetLastError(), "no file"); }).join();  // which has called nothing
  EXPECT_EQ(answer(StatusError(41, "too small")), "41 too small");
  EXPECT_EQ(answer(utils::out_of_range(L"wide")), "2 wide");
  EXPECT_EQ(answer(std::bad_alloc()), std::string("2 ") + std::bad_alloc().what());
  EXPECT_EQ(answer(42), "2 Unknown exception.") << "no std::exception";
  EXPECT_EQ(answer(std::runtime_error("")).substr(0, 2), "2 ") << "a failure always has a text";
  EXPECT_EQ(Call([] {}), 0);
  EXPECT_EQ(GetLastError(), nullptr);
}

TEST(CallFrame, ABufferIsEmptyAfterAFailingCall) {
  std::vector<double> buffer{1.0, 2.0};
  double* out = nullptr;
  const auto fill = [&](double** pointer, const auto& compute) {
    return Call([&] { FillBuffer(buffer, pointer, "values", compute); });
  };
  EXPECT_EQ(fill(&out, []() -> std::vector<double> { throw std::runtime_error("failed"); }), 2);
  EXPECT_TRUE(buffer.empty());
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(fill(nullptr, [] { return std::vector<double>{3.0}; }), 2);
  EXPECT_TRUE(buffer.empty());
  EXPECT_EQ(fill(&out, [] { return std::vector<double>{3.0, 4.0}; }), 0);
  EXPECT_EQ(out, buffer.data());
  EXPECT_EQ(out[1], 4.0);
}

}  // namespace
}  // namespace corvath::zel::api
