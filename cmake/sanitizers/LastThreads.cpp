// Linked to each program of a build that looks for leaks: the last threads leave before the process does. A thread
// gives back itself what Qt keeps of it, behind the moment from which others may know that it has ended, and nobody
// does when the library is already being taken down: a leak, where a machine stands still at the wrong moment.

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace {

constexpr int looks = 100; ///< threads that stay for ever do not hold up the end for more than a second
constexpr std::chrono::milliseconds betweenLooks{10};

/// 0 where the system does not tell.
long countOfThreads()
{
    std::error_code error;
    const std::filesystem::directory_iterator threads("/proc/self/task", error);
    return error ? 0 : long(std::distance(begin(threads), end(threads)));
}

class LastThreads {
public:
    LastThreads() = default;
    ~LastThreads()
    {
        for (int look = 0; look < looks && countOfThreads() > m_before; ++look) {
            std::this_thread::sleep_for(betweenLooks);
        }
    }
    LastThreads(const LastThreads &) = delete;
    LastThreads &operator=(const LastThreads &) = delete;

private:
    const long m_before = countOfThreads(); ///< a sanitizer may have one of its own
};

const LastThreads lastThreads; // goes before what the libraries have, for it came after it

} // namespace
