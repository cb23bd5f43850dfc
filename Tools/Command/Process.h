#pragma once

#include "Tools/Command/Threads.h"

#include <cstddef>

/// The process's surroundings: signals and the three standard descriptors.
namespace Imaging::Tool {

/// To be called first. A full disk and a closed pipe become errors of the write instead of signals; an
/// interrupt takes away the progress line, undoes what is unfinished and ends the process as usual, but never
/// in the middle of an `UninterruptedScope`; standard descriptors that are closed are taken, so that no file
/// gets their numbers.
void prepareProcess();

/// While one exists an interrupt is put off until its end, so that no temporary file is left behind. For
/// short work that cannot block, on the main thread only; not nested.
class UninterruptedScope {
public:
    UninterruptedScope();
    ~UninterruptedScope();
    UninterruptedScope(const UninterruptedScope&) = delete;
    UninterruptedScope& operator=(const UninterruptedScope&) = delete;
};

/// Something unfinished that must not outlive the process when a signal ends it: a temporary file, or a
/// program that was started.
class Unfinished {
public:
    virtual ~Unfinished() = default;
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    /// Called in a signal handler: nothing but what is safe there, and no locks.
    virtual void undo() noexcept = 0;

protected:
    Unfinished() = default;
};

/// Has an interrupt undo something for as long as it exists, several in no particular order. Throws
/// std::length_error where 32 are noted already. Any thread.
class UndoneOnInterrupt {
public:
    explicit UndoneOnInterrupt(Unfinished& unfinished);
    ~UndoneOnInterrupt();
    UndoneOnInterrupt(const UndoneOnInterrupt&) = delete;
    UndoneOnInterrupt& operator=(const UndoneOnInterrupt&) = delete;

private:
    std::size_t m_place;
};

/// Makes one thing of creating something (a file, a process) and noting it down: an interrupt waits for its
/// end, and from the beginning of the undoing on it does not return. For short work on any thread, which
/// gets no signals meanwhile. Nests.
class CreationScope {
public:
    CreationScope();
    ~CreationScope();
    CreationScope(const CreationScope&) = delete;
    CreationScope& operator=(const CreationScope&) = delete;

private:
    BlockedSignals m_blocked;
};

} // namespace Imaging::Tool
