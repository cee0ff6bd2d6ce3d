#pragma once

// Makes ThreadSanitizer see a hand-over that happens inside a library that is not instrumented.
// Outside a ThreadSanitizer build these are nothing.

#if defined(__SANITIZE_THREAD__)
#define CORV_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CORV_THREAD_SANITIZER 1
#endif
#endif

#ifdef CORV_THREAD_SANITIZER
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace corv {

/// What this thread has done so far is visible to the thread that acquires `token` later.
inline void annotateRelease([[maybe_unused]] const void* token)
{
#ifdef CORV_THREAD_SANITIZER
    __tsan_release(const_cast<void*>(token));
#endif
}

/// What a thread did before it released `token` is visible from here on.
inline void annotateAcquire([[maybe_unused]] const void* token)
{
#ifdef CORV_THREAD_SANITIZER
    __tsan_acquire(const_cast<void*>(token));
#endif
}

} // namespace corv

// A function that moves a token through memory that the other thread still sees as unordered.
#if defined(__clang__)
#define CORV_UNSYNCHRONISED __attribute__((no_sanitize("thread"), noinline))
#elif defined(__GNUC__)
#define CORV_UNSYNCHRONISED __attribute__((no_sanitize("thread"), noipa))
#else
#define CORV_UNSYNCHRONISED
#endif
