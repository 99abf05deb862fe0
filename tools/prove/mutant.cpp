#include "mutant.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace tova_mutants {

// In .data, where `mutants.py` finds and changes it.
__attribute__((section(".data"))) int active = -1;

unsigned char* records;

namespace {

std::atomic<bool> is_missing;

// The file is shared by all processes that map it.
unsigned char* open_records() {
    const char* const path = std::getenv("MUTANT_RECORDS");
    const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
    struct stat status;
    if (file < 0 || fstat(file, &status) != 0)
        return nullptr;
    void* const data = mmap(nullptr, static_cast<std::size_t>(status.st_size),
                            PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return data == MAP_FAILED ? nullptr : static_cast<unsigned char*>(data);
}

}  // namespace

void record_first(int number) {
    if (is_missing.load(std::memory_order_relaxed))
        return;
    // Two threads that come here first map the file twice, which does no harm.
    unsigned char* const bytes = open_records();
    if (bytes == nullptr) {
        is_missing = true;
        return;
    }
    bytes[number] = 1;
    __atomic_store_n(&records, bytes, __ATOMIC_RELEASE);
}

}  // namespace tova_mutants
