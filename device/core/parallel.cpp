// SPDX-License-Identifier: BSD-3-Clause
#include "parallel_p.h"

#include "tuning_p.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace DEV {
namespace pimpl {

int partsFor(qint64 n, qint64 threshold)
{
    if (n < threshold || n < 2)
        return 1;
    return int(std::min<qint64>(std::max(1, tuning().parts), n));
}

namespace {

// A thread running @p work, or none when the system has none to give; the
// caller then runs the work itself.
std::thread tryThread(const std::function<void()>& work)
{
    try {
        return std::thread(work);
    } catch (const std::system_error&) {
        return std::thread();
    }
}

} // namespace

void runParts(int parts, const std::function<void(int)>& work)
{
    if (parts < 1)
        return;
    std::vector<std::thread> others;
    std::vector<int> here;
    for (int p = 1; p < parts; ++p) {
        others.push_back(tryThread([&work, p] { work(p); }));
        if (!others.back().joinable())
            here.push_back(p);
    }
    work(0);
    for (int p : here)
        work(p);
    for (std::thread& thread : others) {
        if (thread.joinable())
            thread.join();
    }
}

struct Background::Thread
{
    std::thread thread;
};

Background::Background() = default;

Background::~Background()
{
    wait();
}

void Background::start(bool worth, std::function<void()> work)
{
    wait();
    m_work = std::move(work);
    if (!worth)
        return;
    std::thread thread = tryThread(m_work);
    if (thread.joinable())
        m_thread.reset(new Thread{std::move(thread)});
}

void Background::wait()
{
    if (m_thread) {
        m_thread->thread.join();
        m_thread.reset();
    } else if (m_work) {
        m_work();
    }
    m_work = nullptr;
}

} // namespace pimpl
} // namespace DEV
