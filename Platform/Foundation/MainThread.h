#pragma once

#include "Platform/Foundation/Export.h"

#include <cstddef>
#include <functional>

/// Work for the main thread, from any thread. The library has no loop of its own: the application's loop
/// calls `performPending`, and learns when to do so from a callback or from a descriptor that it polls.
///
/// Threads: every function may be called on every thread, but `performPending` only on the main one. One
/// internal lock guards the queue; it is never held while a unit, the wake-up callback or a destructor of
/// either runs, so all of these may call back into here. Units run in the order in which they were queued.
///
/// Example:
/// @code
/// setMainThread();
/// performOnMainThread([] { /* show the next picture */ });
/// performPending(); // from the application's own loop
/// @endcode
namespace Imaging::Platform {

/// Queues a unit for the main thread. With `waitUntilDone` the call returns when the unit has run and is
/// destroyed; on the main thread itself it then runs at once, ahead of what is queued. Waiting takes as long
/// as the main thread takes to call `performPending`: it must not be waiting for the caller. An exception
/// that leaves a unit is logged and goes no further, in every case. Throws an NSException
/// (NSInvalidArgumentException) for an empty function.
IMAGING_EXPORT void performOnMainThread(std::function<void()> unit, bool waitUntilDone = false);

/// Runs what was queued before the call; units that are queued meanwhile wait for the next call, also when a
/// unit calls `performPending` itself, which runs the rest first. Returns how many units this call ran.
/// Throws an NSException (NSInternalInconsistencyException) when it is not called on the main thread.
IMAGING_EXPORT std::size_t performPending();

/// True on the main thread: the one that called `setMainThread` last, at first the one that loaded the
/// library.
IMAGING_EXPORT bool isMainThread();

/// Makes the calling thread the main one. Units that are queued already will run there.
IMAGING_EXPORT void setMainThread();

/// A function that is called after each unit was queued, on the thread that queued it and with no lock held:
/// the place to wake the application's loop (glfwPostEmptyEvent and the like). It must not throw. Null for
/// none. A thread that is just queueing may still call the one from before.
IMAGING_EXPORT void setMainThreadWakeUp(std::function<void()> wakeUp);

/// A descriptor that polls as readable while units are queued, for loops that wait on descriptors. It is the
/// library's: never read, write or close it. Throws an NSException when the system has no descriptor left.
IMAGING_EXPORT int mainThreadDescriptor();

} // namespace Imaging::Platform
