#pragma once

namespace corv {

/// Waits at most `ms` milliseconds for the jobs of the global thread pool, below 0 without end;
/// true if none is left. Does not wait where all that are left have had their threads replaced.
bool isPoolDoneWithin(int ms);

} // namespace corv
