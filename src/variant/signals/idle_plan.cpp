#include "variant/signals/idle_plan.h"

#include <atomic>
#include <utility>

namespace corvath::math::dft {
namespace {

constexpr std::size_t kMostNumbers = (std::size_t{64} << 20) / sizeof(Complex);

/// No lock, so none that a fork could leave behind.
class IdlePlan {
 public:
  IdlePlan() = default;
  IdlePlan(const IdlePlan&) = delete;
  IdlePlan& operator=(const IdlePlan&) = delete;
  ~IdlePlan() { Exchange(nullptr); }

  std::unique_ptr<Plan> Exchange(std::unique_ptr<Plan> plan) {
    return std::unique_ptr<Plan>(plan_.exchange(plan.release()));
  }

 private:
  std::atomic<Plan*> plan_{nullptr};
};

IdlePlan idle_plan;

}  // namespace

std::unique_ptr<Plan> TakePlan(std::size_t length) {
  std::unique_ptr<Plan> plan = idle_plan.Exchange(nullptr);
  if (!plan || plan->GetLength() != length) plan = std::make_unique<Plan>(length);
  return plan;
}

void GiveBack(std::unique_ptr<Plan> plan) noexcept {
  plan->ReleaseLargeBuffers();
  if (plan->CountNumbers() <= kMostNumbers) idle_plan.Exchange(std::move(plan));
}

void ReleaseIdlePlan() noexcept {
  idle_plan.Exchange(nullptr);
}

}  // namespace corvath::math::dft
