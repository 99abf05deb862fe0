// Runs the scenarios of proof_allocations in eight threads that start each of them together, each
// thread with objects and a working directory of its own. Built with the thread sanitizer, it shows
// that two threads share nothing by themselves. The results are compared with those of one thread.
// Names as arguments select scenarios.
#include "allocations/trial.hpp"

#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <thread>

namespace proof {

while_memory_may_fail::while_memory_may_fail() {}
while_memory_may_fail::~while_memory_may_fail() {}

namespace {

const unsigned thread_count = 8;

// What the headers allow on one thread at a time: the hook and the measured cost of the clock
// belong to the process, and the current date and time are taken from a buffer of the C library.
const char* const one_at_a_time[] = {"assertion hooks", "dates", "times", "dates with times",
                                     "timers"};

bool is_one_at_a_time(const scenario& one) {
    for (const char* const name : one_at_a_time)
        if (std::strcmp(name, one.name) == 0)
            return true;
    return false;
}

class barrier {
public:
    void wait() {
        std::unique_lock<std::mutex> lock(m_mutex);
        const unsigned long round = m_round;
        if (++m_waiting == thread_count) {
            m_waiting = 0;
            ++m_round;
            m_all.notify_all();
        } else {
            m_all.wait(lock, [&] { return m_round != round; });
        }
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_all;
    unsigned m_waiting = 0;
    unsigned long m_round = 0;
};

// The thread gets a working directory that it shares with no other.
void enter(const std::string& directory) {
    ::mkdir(directory.c_str(), 0777);
    if (::unshare(CLONE_FS) != 0 || ::chdir(directory.c_str()) != 0) {
        std::cerr << "no working directory " << directory << '\n';
        std::exit(2);
    }
}

std::uint64_t result_of(const scenario& one) {
    trial t;
    one.run(t);
    return t.result();
}

typedef std::vector<std::uint64_t> results;

results results_of_one_thread(const scenarios& all) {
    results found;
    std::thread([&] {
        enter("alone");
        for (const scenario& one : all) {
            result_of(one);  // fills what is made once, as the facets of a locale
            found.push_back(result_of(one));
        }
    }).join();
    return found;
}

std::vector<results> results_of_threads(const scenarios& all) {
    std::vector<results> found(thread_count, results(all.size()));
    barrier start;
    std::mutex alone;
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < thread_count; ++number)
        threads.emplace_back([&, number] {
            enter("thread" + std::to_string(number));
            for (std::size_t i = 0; i < all.size(); ++i) {
                start.wait();
                std::unique_lock<std::mutex> lock(alone, std::defer_lock);
                if (is_one_at_a_time(all[i]))
                    lock.lock();
                found[number][i] = result_of(all[i]);
            }
        });
    for (std::thread& one : threads)
        one.join();
    return found;
}

scenarios selected(int count, char** words) {
    scenarios chosen;
    for (const scenario& one : all_scenarios()) {
        bool wanted = count == 1;
        for (int i = 1; i < count; ++i)
            wanted |= std::strcmp(words[i], one.name) == 0;
        if (wanted)
            chosen.push_back(one);
    }
    return chosen;
}

}  // namespace

}  // namespace proof

int main(int count, char** words) {
    const proof::scenarios all = proof::selected(count, words);
    if (all.empty()) {
        std::cerr << "usage: proof_threads [NAME...]\n";
        return 2;
    }
    // Threads first, so that what is made once is made while they meet.
    const std::vector<proof::results> found = proof::results_of_threads(all);
    const proof::results expected = proof::results_of_one_thread(all);
    unsigned different = 0;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (const proof::results& one : found)
            if (one[i] != expected[i]) {
                std::cout << all[i].name << ": a thread has another result\n";
                ++different;
            }
    std::cout << all.size() << " scenarios, " << proof::thread_count << " threads, " << different
              << " different results\n";
    return different == 0 ? 0 : 1;
}
