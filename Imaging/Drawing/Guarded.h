#pragma once

// Internal: walks over sources that go on when one of them fails. Not installed.

namespace Imaging {

/// Runs one step of a walk over sources; what it throws ends that step alone.
template<class Step>
void guarded(const Step& step) {
    try {
        step();
    } catch (...) { // whatever it was, the walk goes on
    }
}

} // namespace Imaging
