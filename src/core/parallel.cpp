#include "core/parallel.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <thread>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace orvane::detail {

namespace {

std::atomic<unsigned> threadCount{0};

}  // namespace

void SetThreadCount(unsigned count) noexcept { threadCount.store(count, std::memory_order_relaxed); }

unsigned ThreadCount() noexcept {
  const unsigned set = threadCount.load(std::memory_order_relaxed);
  if (set != 0) return set;
  return std::max(1u, std::thread::hardware_concurrency());
}

void RunTasks(std::size_t count, const std::function<void(std::size_t)>& task) {
  const std::size_t threads = std::min<std::size_t>(ThreadCount(), count);
  if (threads <= 1) {
    for (std::size_t i = 0; i < count; ++i) task(i);
    return;
  }
  std::atomic<std::size_t> next{1};
  std::exception_ptr failure;
  std::mutex failureMutex;
  auto work = [&](std::size_t first) {
    try {
      for (std::size_t i = first; i < count; i = next.fetch_add(1)) task(i);
    } catch (...) {
      const std::lock_guard lock(failureMutex);
      if (!failure) failure = std::current_exception();
      next = count;  // the others stop at their next task
    }
  };
  std::vector<std::thread> workers;
  workers.reserve(threads - 1);
  for (std::size_t t = 1; t < threads; ++t) workers.emplace_back(work, next.fetch_add(1));
  work(0);
  for (std::thread& w : workers) w.join();
  if (failure) std::rethrow_exception(failure);
}

void AdviseHugePages(const void* data, std::size_t bytes) noexcept {
#if defined(__linux__)
  constexpr std::uintptr_t kHuge = std::uintptr_t{1} << 21;
  const auto begin = reinterpret_cast<std::uintptr_t>(data);
  const std::uintptr_t first = (begin + kHuge - 1) & ~(kHuge - 1);
  const std::uintptr_t last = (begin + bytes) & ~(kHuge - 1);
  if (data == nullptr || last <= first) return;
  // Only a hint: a kernel without transparent huge pages refuses it and nothing changes.
  madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
  (void)data;
  (void)bytes;
#endif
}

void PrefaultPages(const void* data, std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
  constexpr std::uintptr_t kPage = 4096;
  const auto begin = reinterpret_cast<std::uintptr_t>(data);
  const std::uintptr_t first = (begin + kPage - 1) & ~(kPage - 1);
  const std::uintptr_t last = (begin + bytes) & ~(kPage - 1);
  if (data == nullptr || last <= first) return;
  madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
#else
  (void)data;
  (void)bytes;
#endif
}

void PrefaultPagesShared(const void* data, std::size_t bytes) {
  constexpr std::size_t kPiece = std::size_t{8} << 20;
  const auto* bytesAt = static_cast<const unsigned char*>(data);
  RunTasks((bytes + kPiece - 1) / kPiece, [&](std::size_t piece) {
    PrefaultPages(bytesAt + piece * kPiece, std::min(kPiece, bytes - piece * kPiece));
  });
}

namespace {

constexpr std::size_t kPageBlock = std::size_t{1} << 20;
constexpr std::size_t kHugePage = std::size_t{1} << 21;

}  // namespace

void* AllocatePages(std::size_t bytes) {
#if defined(__linux__)
  if (bytes >= kPageBlock) {
    // Map a huge page more than asked and trim both ends to a 2 MiB aligned block.
    const std::size_t size = (bytes + kHugePage - 1) & ~(kHugePage - 1);
    void* mapped = mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = (begin + kHugePage - 1) & ~(std::uintptr_t{kHugePage} - 1);
    if (aligned > begin) munmap(mapped, aligned - begin);
    const std::uintptr_t tail = begin + size + kHugePage - (aligned + size);
    if (tail > 0) munmap(reinterpret_cast<void*>(aligned + size), tail);
    AdviseHugePages(reinterpret_cast<void*>(aligned), size);
    return reinterpret_cast<void*>(aligned);
  }
#endif
  return ::operator new(bytes);
}

void FreePages(void* data, std::size_t bytes) noexcept {
#if defined(__linux__)
  if (bytes >= kPageBlock) {
    munmap(data, (bytes + kHugePage - 1) & ~(kHugePage - 1));
    return;
  }
#endif
  ::operator delete(data);
}

}  // namespace orvane::detail
