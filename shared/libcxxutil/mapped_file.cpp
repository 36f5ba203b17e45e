#include "shared/libcxxutil/mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <mutex>

namespace {

// What is mapped now, for the handler of a fault, which may take no lock.
struct Place {
    std::atomic<uintptr_t> begin{0};
    std::atomic<size_t> size{0};
};
constexpr size_t most_places = 256;
std::array<Place, most_places> places;

struct sigaction behind_us;

bool is_ours(uintptr_t address) {
    for (const Place& place : places) {
        const uintptr_t begin = place.begin.load(std::memory_order_acquire);
        if (begin != 0 && address >= begin && address - begin < place.size.load(std::memory_order_acquire))
            return true;
    }
    return false;
}

// A page that the file has no more becomes one of zeros; the read that failed is done again.
bool put_zeros(uintptr_t address) {
    const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    void* const at = reinterpret_cast<void*>(address / page * page);  // NOLINT(performance-no-int-to-ptr)
    return ::mmap(at, page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == at;
}

void on_fault(int number, siginfo_t* facts, void* context) {
    const auto address = reinterpret_cast<uintptr_t>(facts->si_addr);
    const int error = errno;
    const bool mended = is_ours(address) && put_zeros(address);
    errno = error;
    if (mended) return;
    // Another's fault: to whoever was asked before.
    if ((behind_us.sa_flags & SA_SIGINFO) != 0)
        behind_us.sa_sigaction(number, facts, context);
    else if (behind_us.sa_handler != SIG_DFL && behind_us.sa_handler != SIG_IGN)
        behind_us.sa_handler(number);
    else
        std::signal(number, SIG_DFL);
}

void handle_faults() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction action = {};
        action.sa_sigaction = on_fault;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &behind_us);
    });
}

// False when there are too many.
bool note_place(const uint8_t* begin, size_t size) {
    for (Place& place : places) {
        if (place.begin.load(std::memory_order_relaxed) != 0) continue;
        place.size.store(size, std::memory_order_release);
        place.begin.store(reinterpret_cast<uintptr_t>(begin), std::memory_order_release);
        return true;
    }
    return false;
}
void forget_place(const uint8_t* begin) {
    for (Place& place : places)
        if (place.begin.load(std::memory_order_relaxed) == reinterpret_cast<uintptr_t>(begin))
            place.begin.store(0, std::memory_order_release);
}

size_t size_of(int file) {
    struct stat facts = {};
    return ::fstat(file, &facts) == 0 && facts.st_size > 0 ? static_cast<size_t>(facts.st_size) : 0;
}

}  // namespace

Result MappedFile::Open(const std::string& name, std::unique_ptr<MappedFile>& file) {
    FileDescriptor opened(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened.IsOpen()) return Result::system(name, errno);
    struct stat facts = {};
    if (::fstat(opened.number(), &facts) != 0) return Result::system(name, errno);
    if (!S_ISREG(facts.st_mode)) return Result::failure("not a regular file", name);
    std::unique_ptr<MappedFile> made(new MappedFile);
    made->file_ = std::move(opened);
    made->Refresh();
    file = std::move(made);
    return {};
}

std::unique_ptr<MappedFile> MappedFile::OfBytes(std::vector<uint8_t> bytes) {
    std::unique_ptr<MappedFile> made(new MappedFile);
    made->copies_.push_back(std::move(bytes));
    made->data_ = made->copies_.back().data();
    made->size_ = made->copies_.back().size();
    return made;
}

MappedFile::~MappedFile() {
    for (const Region& region : regions_) {
        ::munmap(region.begin, region.size);
        forget_place(region.begin);
    }
}

void MappedFile::Refresh() {
    if (!file_.IsOpen()) return;
    const size_t size = size_of(file_.number());
    if (size <= size_) return;
    if (!regions_.empty() && size <= regions_.back().size)
        size_ = size;
    else
        static_cast<void>(Map(size) || Read(size));
}

// With room for the file to grow, so that few are needed.
bool MappedFile::Map(size_t size) {
    const size_t room = size * 2 + (size_t{1} << 20);
    void* const begin = ::mmap(nullptr, room, PROT_READ, MAP_SHARED, file_.number(), 0);
    if (begin == MAP_FAILED) return false;
    const Region region{static_cast<uint8_t*>(begin), room};
    if (!note_place(region.begin, region.size)) {
        ::munmap(begin, room);
        return false;
    }
    handle_faults();
    regions_.push_back(region);
    data_ = region.begin;
    size_ = size;
    return true;
}

bool MappedFile::Read(size_t size) {
    std::vector<uint8_t> bytes(size);
    size_t done = 0;
    while (done < size) {
        const ssize_t got =
            ::pread(file_.number(), bytes.data() + done, size - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    copies_.push_back(std::move(bytes));
    data_ = copies_.back().data();
    size_ = done;
    return true;
}
