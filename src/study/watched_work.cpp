#include "study/watched_work.h"

#include "foundation/host_signals.h"
#include "study/refusal.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace corvath::study {
namespace {

constexpr std::chrono::milliseconds kInterval(50);

/// What the two threads share.
struct State {
  std::mutex mutex;
  std::condition_variable changed;
  double share = 0.0;
  std::string text;
  bool has_news = true;
  bool is_cancelled = false;
  bool is_done = false;
  std::exception_ptr failure;
};

}  // namespace

void RunWatched(const Progress& progress, const std::function<void(const Progress&)>& work) {
  if (!progress) {
    work({});
    return;
  }
  State state;
  const auto note = [&state](double share, const std::string& text) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.share = share;
    state.text = text;
    state.has_news = true;
    return !state.is_cancelled;
  };
  if (!progress(state.share, state.text)) throw Cancelled();
  const auto run = [&] {
    std::exception_ptr failure;
    try {
      work(note);
    } catch (...) {
      failure = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.failure = failure;
    state.is_done = true;
    state.changed.notify_one();
  };
  std::thread worker = [&] {
    const utils::SignalsBlocked blocked;
    return std::thread(run);
  }();
  std::exception_ptr own_failure;
  std::unique_lock<std::mutex> lock(state.mutex);
  while (!state.is_done) {
    state.changed.wait_for(lock, kInterval);
    if (state.is_done || state.is_cancelled || !state.has_news) continue;
    state.has_news = false;
    const double share = state.share;
    const std::string text = state.text;
    lock.unlock();
    bool goes_on = false;
    try {
      goes_on = progress(share, text);
    } catch (...) {
      own_failure = std::current_exception();
    }
    lock.lock();
    state.is_cancelled = !goes_on;
  }
  lock.unlock();
  worker.join();
  if (own_failure) std::rethrow_exception(own_failure);
  if (state.failure) std::rethrow_exception(state.failure);
  if (state.is_cancelled) throw Cancelled();  // at the very end
}

}  // namespace corvath::study
