// Work on many like items by several threads.
//
// Items are handed out in runs of neighbours; what becomes of an item may depend on its number
// alone, so that the result is the same for any number of threads. Used by whatever follows rays.
#pragma once

#include <cstddef>
#include <functional>

namespace townskin_case {

/// Told now and then how many of all items are done; calls never overlap.
using Progress = std::function<void(std::size_t done, std::size_t total)>;

/// The threads that are meant: 0 stands for one for each processor.
unsigned threads_of(unsigned wanted);

/// Calls `work(thread, first, end)` until all `items` are done, in runs of at most `run` items.
/// `thread` counts from 0, for what each thread keeps to itself. The first exception stops the work
/// and goes on to the caller.
void in_parallel(
    unsigned threads, std::size_t items, std::size_t run,
    const std::function<void(unsigned thread, std::size_t first, std::size_t end)>& work,
    const Progress& progress = {});

}  // namespace townskin_case
