// SPDX-License-Identifier: BSD-3-Clause
#include "tuning_p.h"

#include <thread>

namespace DEV {
namespace pimpl {

Tuning& tuning()
{
    // A machine of one core gets one part: a second would only take turns.
    static Tuning current = [] {
        Tuning defaults;
        if (std::thread::hardware_concurrency() == 1)
            defaults.parts = 1;
        return defaults;
    }();
    return current;
}

} // namespace pimpl
} // namespace DEV
