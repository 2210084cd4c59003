#pragma once

// Threads and memory hints for the pure computations (triangulation, contour tracing).
// Internal header: no compatibility promise.
//
// Work is split into a fixed number of parts whose results are put together in part
// order, so the result never depends on how many threads ran the parts.

#include <cstddef>
#include <functional>
#include <new>
#include <vector>

namespace orvane::detail {

// The threads a computation may use: the count set last, or the machine's cores when it
// is 0 (the default). Tests set 1 and 2 to compare the results.
void SetThreadCount(unsigned count) noexcept;
unsigned ThreadCount() noexcept;

// Runs task(0) .. task(count - 1), task 0 on the calling thread, the others on up to
// ThreadCount() - 1 more threads; returns when all are done. The first exception a task
// throws is rethrown here after the others finish.
void RunTasks(std::size_t count, const std::function<void(std::size_t)>& task);

// Asks the kernel to back the whole 2 MiB pages within [data, data + bytes) with huge
// pages (Linux transparent huge pages in madvise mode; elsewhere nothing). Large buffers
// that are filled once then fault 512 times less often; the contents are not touched.
void AdviseHugePages(const void* data, std::size_t bytes) noexcept;

// Maps every page within [data, data + bytes) writable ahead of use, in one call rather
// than one fault per page as they are first written (Linux 5.14 and later; elsewhere, or
// where refused, nothing). The contents are not touched.
void PrefaultPages(const void* data, std::size_t bytes) noexcept;

// Prefaults [data, data + bytes) in 8 MiB pieces on up to ThreadCount() threads.
void PrefaultPagesShared(const void* data, std::size_t bytes);

// Scratch memory of large computations: blocks of 1 MiB and more come straight from the
// kernel, 2 MiB aligned with huge pages advised, and go straight back when released, so
// that scratch never lingers in the malloc heap to raise the next run's peak; smaller
// blocks come from operator new.
void* AllocatePages(std::size_t bytes);
void FreePages(void* data, std::size_t bytes) noexcept;

template <class T>
struct PageAllocator {
  using value_type = T;
  PageAllocator() noexcept = default;
  template <class U>
  explicit PageAllocator(const PageAllocator<U>&) noexcept {}
  T* allocate(std::size_t count) { return static_cast<T*>(AllocatePages(count * sizeof(T))); }
  void deallocate(T* data, std::size_t count) noexcept { FreePages(data, count * sizeof(T)); }
  friend bool operator==(const PageAllocator&, const PageAllocator&) noexcept { return true; }
};

template <class T>
using PageVector = std::vector<T, PageAllocator<T>>;

// Reserves room for count elements and advises huge pages for the reserved block.
template <class T, class Allocator>
void ReserveHuge(std::vector<T, Allocator>& v, std::size_t count) {
  v.reserve(count);
  AdviseHugePages(v.data(), v.capacity() * sizeof(T));
}

// ReserveHuge, then prefaults the first count elements' pages (use only where the room
// will all be written).
template <class T, class Allocator>
void ReservePrefaulted(std::vector<T, Allocator>& v, std::size_t count, bool shared = false) {
  ReserveHuge(v, count);
  if (shared) {
    PrefaultPagesShared(v.data(), count * sizeof(T));
  } else {
    PrefaultPages(v.data(), count * sizeof(T));
  }
}

}  // namespace orvane::detail
