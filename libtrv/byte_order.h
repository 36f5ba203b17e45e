// The one place that knows byte order.
#pragma once

#include <cstdint>
#include <cstring>

inline uint16_t load_be16(const uint8_t* p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return __builtin_bswap16(v);
}
inline uint32_t load_be32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return __builtin_bswap32(v);
}
inline uint64_t load_be64(const uint8_t* p) {
    uint64_t v;
    std::memcpy(&v, p, 8);
    return __builtin_bswap64(v);
}
inline uint32_t load_le32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline uint16_t load_le16(const uint8_t* p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}
inline uint32_t load_32(const uint8_t* p, bool big_endian) {
    return big_endian ? load_be32(p) : load_le32(p);
}
inline uint16_t load_16(const uint8_t* p, bool big_endian) {
    return big_endian ? load_be16(p) : load_le16(p);
}

inline void store_be16(uint8_t* p, uint16_t v) {
    v = __builtin_bswap16(v);
    std::memcpy(p, &v, 2);
}
inline void store_be32(uint8_t* p, uint32_t v) {
    v = __builtin_bswap32(v);
    std::memcpy(p, &v, 4);
}
inline void store_be64(uint8_t* p, uint64_t v) {
    v = __builtin_bswap64(v);
    std::memcpy(p, &v, 8);
}
inline void store_16(uint8_t* p, uint16_t v, bool big_endian) {
    if (big_endian) v = __builtin_bswap16(v);
    std::memcpy(p, &v, 2);
}
inline void store_32(uint8_t* p, uint32_t v, bool big_endian) {
    if (big_endian) v = __builtin_bswap32(v);
    std::memcpy(p, &v, 4);
}
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the loads above assume a little-endian host");
