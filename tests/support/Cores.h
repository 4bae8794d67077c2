#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace trelv::tests {

/// Calls work(0) … work(count - 1), as many at once as there are cores.
template <class Work>
void onAllCores(std::size_t count, const Work& work) {
  std::atomic<std::size_t> next{0};
  const auto worker = [&] {
    for (std::size_t at = next++; at < count; at = next++) {
      work(at);
    }
  };
  std::vector<std::jthread> threads;
  for (unsigned core = 1; core < std::thread::hardware_concurrency(); ++core) {
    threads.emplace_back(worker);
  }
  worker();
}

}  // namespace trelv::tests
