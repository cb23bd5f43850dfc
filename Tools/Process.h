#pragma once

/// The process's surroundings: signals and the three standard descriptors.
namespace Tool {

/// To be called first. A full disk and a closed pipe become errors of the write instead of signals; an
/// interrupt takes away the progress line and ends the process as usual, but never in the middle of an
/// `UninterruptedScope`; standard descriptors that are closed are taken, so that no file gets their numbers.
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

} // namespace Tool
