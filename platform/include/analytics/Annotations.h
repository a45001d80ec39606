#pragma once

// Clang's thread annotations: what a lock guards is checked when Clang compiles, and reads as a
// comment everywhere else.
#if defined(__clang__)
#define ANALYTICS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ANALYTICS_THREAD_ANNOTATION(x)
#endif

#define ANALYTICS_CAPABILITY(name) ANALYTICS_THREAD_ANNOTATION(capability(name))
#define ANALYTICS_SCOPED_CAPABILITY ANALYTICS_THREAD_ANNOTATION(scoped_lockable)
#define ANALYTICS_GUARDED_BY(lock) ANALYTICS_THREAD_ANNOTATION(guarded_by(lock))
#define ANALYTICS_REQUIRES(...) ANALYTICS_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ANALYTICS_ACQUIRE(...) ANALYTICS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ANALYTICS_RELEASE(...) ANALYTICS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ANALYTICS_NO_THREAD_ANALYSIS ANALYTICS_THREAD_ANNOTATION(no_thread_safety_analysis)
