// Records which of the given instructions a program runs. Loaded with LD_PRELOAD:
//
//     JUMP_TRACE=records LD_PRELOAD=./jump_trace.so program
//
// `mutants.py` writes the records, one for each instruction of a library: its address in the
// library, its first byte, and whether it ran. In the library file that byte is the trap
// instruction. The first time that the program comes there, the handler puts the byte back and
// marks the record, so from then on the program runs as usual. The records are shared with all
// processes that the program starts.
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ucontext.h>

namespace {

struct record {
    std::uint64_t address;
    std::uint32_t byte;
    std::uint32_t ran;
};

record* first;
record* last;

// The base address of the loaded object that contains an address.
struct search {
    std::uintptr_t address;
    std::uintptr_t base;
};

int find_object(dl_phdr_info* object, std::size_t, void* data) {
    search& wanted = *static_cast<search*>(data);
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& part = object->dlpi_phdr[i];
        const std::uintptr_t begin = object->dlpi_addr + part.p_vaddr;
        if (part.p_type == PT_LOAD && wanted.address >= begin &&
            wanted.address < begin + part.p_memsz) {
            wanted.base = object->dlpi_addr;
            return 1;
        }
    }
    return 0;
}

void on_trap(int, siginfo_t*, void* state) {
    greg_t& next = static_cast<ucontext_t*>(state)->uc_mcontext.gregs[REG_RIP];
    search wanted = {static_cast<std::uintptr_t>(next) - 1, 0};
    dl_iterate_phdr(&find_object, &wanted);
    record* const found = std::lower_bound(
        first, last, wanted.address - wanted.base,
        [](const record& one, std::uint64_t address) { return one.address < address; });
    if (found == last || found->address != wanted.address - wanted.base)
        abort();
    found->ran = 1;
    const std::uintptr_t page = wanted.address & ~std::uintptr_t(4095);
    // Two threads may do this at once: both write the same byte, and the page stays writable.
    if (mprotect(reinterpret_cast<void*>(page), 4096, PROT_READ | PROT_WRITE | PROT_EXEC) != 0)
        abort();
    *reinterpret_cast<volatile unsigned char*>(wanted.address) =
        static_cast<unsigned char>(found->byte);
    next = static_cast<greg_t>(wanted.address);
}

// The linker option `-z initfirst` lets this run before all other initializers, including those of
// the C library, so getenv knows nothing yet.
__attribute__((constructor)) void start(int, char**, char** environment) {
    static const char name[] = "JUMP_TRACE=";
    int file = -1;
    for (; *environment != nullptr; ++environment)
        if (std::strncmp(*environment, name, sizeof name - 1) == 0)
            file = open(*environment + sizeof name - 1, O_RDWR | O_CLOEXEC);
    if (file < 0)
        return;
    struct stat status;
    fstat(file, &status);
    void* const data = mmap(nullptr, static_cast<std::size_t>(status.st_size),
                            PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (data == MAP_FAILED)
        abort();
    first = static_cast<record*>(data);
    last = first + static_cast<std::size_t>(status.st_size) / sizeof(record);
    // A stack of its own: some tests leave little of theirs.
    static char room[65536];
    stack_t stack = {};
    stack.ss_sp = room;
    stack.ss_size = sizeof room;
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = &on_trap;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigaction(SIGTRAP, &action, nullptr);
}

}  // namespace
