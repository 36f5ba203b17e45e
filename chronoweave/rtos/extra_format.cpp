#include "chronoweave/rtos/extra_format.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"

namespace {

uint32_t last_value = 0;

class ExtraFormatter {
  public:
    ExtraFormatter(const EventRecord& event, std::string_view format, bool bigEndian, bool warn,
                   std::string& text)
        : event_(event),
          format_(format),
          data_(event.extra.data() + 4),
          left_(event.extra.size() - 4),
          big_(bigEndian),
          warn_(warn),
          text_(text) {}

    void run(bool warnUnused) {
        while (at_ < format_.size() && !full()) {
            const char c = format_[at_++];
            if (c == '%' && left_ != 0)
                convert();
            else
                text_.push_back(c);
        }
        if (at_ < format_.size() && left_ != 0) exceeded();
        const bool blankRest = format_.find_first_not_of(" \t", at_) == std::string_view::npos;
        if (left_ == 0) {
            if (!blankRest) NotEnough();
        } else if (warnUnused && problem()) {
            gen_console("WARNING: event(type=0x%x/0x%x) has unused extra data(%d bytes)\n", event_.type,
                        event_.subtype, static_cast<int>(left_));
        }
    }
    bool flagged() const { return flagged_; }

  private:
    bool full() const { return text_.size() >= extra_TextLimit; }
    char peek() const { return at_ < format_.size() ? format_[at_] : '\0'; }
    char take() { return at_ < format_.size() ? format_[at_++] : '\0'; }

    // One conversion; the position is behind its "%".
    void convert() {
        if (CopyString()) return;
        const size_t behind = at_;
        uint32_t repeats = 1;
        if (peek() == 'S') {
            repeats = last_value;
            ++at_;
        }
        const char size = take();
        if (std::string_view("124AIC").find(size) == std::string_view::npos) return unknown(size, behind);
        char display = size == 'C' ? 'C' : take();
        if (size == 'I') display = 'X';
        for (uint32_t done = 0; done < repeats; ++done) {
            uint32_t value = 0;
            if (!read(size, value)) return NotEnough();
            last_value = value;
            if (!put(display, value, done + 1 < repeats, behind)) return;
        }
    }

    // "%", a count and "C". False, and nothing taken, when the letters are not such a conversion.
    bool CopyString() {
        size_t at = at_;
        uint64_t count = 0;
        while (at < format_.size() && format_[at] >= '0' && format_[at] <= '9')
            count = std::min<uint64_t>(count * 10 + static_cast<uint64_t>(format_[at++] - '0'), UINT32_MAX);
        if (at == format_.size() || format_[at] != 'C') return false;
        if (at == at_) count = 1;
        at_ = at + 1;
        while (count != 0 && left_ != 0 && *data_ != 0 && !full()) {
            text_.push_back(static_cast<char>(*data_++));
            --left_;
        }
        // A string uses up more of the remaining length than of the data.
        left_ -= std::min<size_t>(left_, static_cast<size_t>(count));
        return true;
    }

    // Takes bytes off the data; null, with nothing remaining, when there are too few.
    const uint8_t* bytes(size_t count) {
        if (left_ < count) {
            left_ = 0;
            return nullptr;
        }
        left_ -= count;
        data_ += count;
        return data_ - count;
    }

    bool read(char size, uint32_t& value) {
        if (size == 'A' || size == 'I') return ReadTagged(value);
        const uint8_t* p = bytes(size == '4' ? 4 : size == '2' ? 2 : 1);
        if (!p) return false;
        if (size == '4')
            value = load_32(p, big_);
        else if (size == '2')
            value = big_ ? load_be16(p) : p[1] * 256u;  // little-endian targets lose the low byte
        else
            value = *p;
        return true;
    }

    // A tag below 0x80 has one byte of value behind it; any other says how many bytes, most significant
    // first.
    bool ReadTagged(uint32_t& value) {
        const uint8_t* tag = bytes(1);
        if (!tag) return false;
        const size_t count = *tag < 0x80 ? 1 : *tag - 0x80u;
        const uint8_t* p = bytes(count);
        if (!p) return false;
        value = 0;
        for (size_t i = 0; i < count; ++i) value = value << 8 | p[i];
        return true;
    }

    // Puts one value and, with more to follow, its blank into the text. False ends the conversion.
    bool put(char display, uint32_t value, bool more, size_t behind) {
        char digits[16];
        int length = 0;
        switch (display) {
            case 'X':
            case 'I':
                length = std::snprintf(digits, sizeof digits, "0x%x", value);
                break;
            case 'D':
                length = std::snprintf(digits, sizeof digits, "%d", static_cast<int32_t>(value));
                break;
            case 'C':
                // A 0 byte would end the text.
                digits[0] = static_cast<char>(value);
                length = digits[0] == '\0' ? 0 : 1;
                break;
            case 'x':
                break;
            default:
                unknown(display, behind);
                return false;
        }
        if (more && display != 'C') digits[length++] = ' ';
        if (text_.size() + static_cast<size_t>(length) > extra_TextLimit) {
            exceeded();
            return false;
        }
        text_.append(digits, static_cast<size_t>(length));
        return true;
    }

    // A problem is told and flagged only with warnings on.
    bool problem() {
        if (warn_) flagged_ = true;
        return warn_;
    }
    void exceeded() {
        if (problem())
            gen_console("WARNING: event(type=0x%x/0x%x) exceeded extra data limit\n", event_.type,
                        event_.subtype);
    }
    void NotEnough() {
        if (problem())
            gen_console("WARNING: event(type=0x%x/0x%x) does not have enough extra data\n", event_.type,
                        event_.subtype);
    }
    // The walk goes on directly behind the "%", and the letter there is text even when it is another "%".
    void unknown(char letter, size_t behind) {
        if (problem())
            gen_console("WARNING: event(type=0x%x/0x%x) has unknown format character in extra data (%.*s)\n",
                        event_.type, event_.subtype, letter == '\0' ? 0 : 1, &letter);
        at_ = behind;
        if (peek() == '%' && !full()) text_.push_back(take());
    }

    const EventRecord& event_;
    std::string_view format_;
    size_t at_ = 0;
    const uint8_t* data_;
    size_t left_;
    bool big_;
    bool warn_;
    bool flagged_ = false;
    std::string& text_;
};

}  // namespace

bool extra_Format(const EventRecord& event, std::string_view format, bool bigEndian, bool warn,
                  bool warnUnused, std::string& text, bool* flag) {
    text.clear();
    if (flag) *flag = false;
    if (event.extra.size() < 5) return false;
    ExtraFormatter formatter(event, format, bigEndian, warn, text);
    formatter.run(warnUnused);
    if (flag) *flag = formatter.flagged();
    return true;
}
