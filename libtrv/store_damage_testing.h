// Random damage of a store for tests: cuts, overwritten stretches, an index that disagrees, reads that fail.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "libtrv/store_image_testing.h"

// Which seeds a test of random damage takes: those of CW_DAMAGE_SEEDS, "END" or "FIRST-END", else the first
// so many.
struct DamageSeeds {
    explicit DamageSeeds(unsigned otherwise) : end(otherwise) {
        const char* wanted = std::getenv("CW_DAMAGE_SEEDS");
        if (!wanted) return;
        char* behind = nullptr;
        end = static_cast<unsigned>(std::strtoul(wanted, &behind, 10));
        if (*behind != '-') return;
        first = end;
        end = static_cast<unsigned>(std::strtoul(behind + 1, nullptr, 10));
    }
    unsigned first = 0, end;
};

// A store with what is done to it.
struct DamagedImage {
    StoreImage image;
    std::string what;
    uint64_t failFrom = 0, failTo = 0;  // bytes of the stream that can't be read
    uint64_t indexFailFrom = 0, indexFailTo = 0;
};

class Damager {
  public:
    Damager(const StoreImage& whole, unsigned seed) : whole_(whole), random_(seed) {}

    DamagedImage next() {
        DamagedImage one{whole_, "", 0, 0, 0, 0};
        switch (random_() % 10) {
            case 0:
                cut(one, one.image.events, "stream");
                break;
            case 1:
                cut(one, one.image.index, "index");
                break;
            case 2:
                cut(one, one.image.version, "version");
                break;
            case 3:
            case 4:
            case 5:
                overwrite(one, one.image.events, "stream");
                break;
            case 6:
                overwrite(one, one.image.index, "index");
                break;
            case 7:
            case 8:
                disagree(one);
                break;
            default:
                fail(one);
        }
        return one;
    }
    std::mt19937& random() { return random_; }

  private:
    size_t below(size_t n) { return random_() % std::max<size_t>(n, 1); }

    void cut(DamagedImage& one, Bytes& bytes, const char* name) {
        const size_t size = below(bytes.size());
        bytes.resize(size);
        one.what = std::string(name) + " cut at " + std::to_string(size);
    }
    // 64 bytes and more: noise, zeros, ones, or bytes of another place.
    void overwrite(DamagedImage& one, Bytes& bytes, const char* name) {
        const size_t size = std::min(bytes.size(), 64 + below(below(3) == 0 ? 3000 : 200));
        const size_t at = below(bytes.size() - size + 1), from = below(bytes.size() - size + 1);
        const Bytes other(bytes.begin() + static_cast<ptrdiff_t>(from),
                          bytes.begin() + static_cast<ptrdiff_t>(from + size));
        const size_t kind = below(4);
        for (size_t i = 0; i < size; ++i)
            bytes[at + i] = kind == 0   ? 0
                            : kind == 1 ? 0xFF
                            : kind == 2 ? other[i]
                                        : static_cast<uint8_t>(random_());
        one.what = std::string(name) + " overwritten at " + std::to_string(at) + ", " + std::to_string(size) +
                   " bytes, kind " + std::to_string(kind);
    }
    // One record of the index is another one, is missing, stands twice, or two have changed places.
    void disagree(DamagedImage& one) {
        Bytes& index = one.image.index;
        const size_t records = (index.size() - 21) / 13;
        const size_t number = below(records), kind = below(5);
        const auto place = [&](size_t record) {
            return index.begin() + static_cast<ptrdiff_t>(20 + 13 * record);
        };
        const Bytes record(place(number), place(number + 1));
        if (kind == 0)
            index.erase(place(number), place(number + 1));
        else if (kind == 1)
            index.insert(place(number), record.begin(), record.end());
        else if (kind == 2 && number + 1 < records)
            std::swap_ranges(place(number), place(number + 1), place(number + 1));
        else
            for (int i = 0; i < 4; ++i)  // of the time's low half, or of the offset
                *(place(number) + (kind == 3 ? 5 : 9) + i) = static_cast<uint8_t>(i < 2 ? 0 : random_());
        one.what = "index disagrees, record " + std::to_string(number) + ", kind " + std::to_string(kind);
    }
    void fail(DamagedImage& one) {
        const bool index = below(4) == 0;
        const uint64_t size = index ? one.image.index.size() : one.image.events.size();
        const uint64_t from = below(size), to = from + 1 + below(5000);
        (index ? one.indexFailFrom : one.failFrom) = from;
        (index ? one.indexFailTo : one.failTo) = to;
        one.what = std::string(index ? "index" : "stream") + " fails from " + std::to_string(from) + " to " +
                   std::to_string(to);
    }

    const StoreImage& whole_;
    std::mt19937 random_;
};
