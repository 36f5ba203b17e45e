// One value of a row, and how it reads as JSON, as CSV and as text for people.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/cli/row_buffer.h"
#include "chronoweave/engine/time_base.h"
#include "shared/libcxxutil/tick_text.h"

// Views of texts and bytes: what they show must last until the row is put.
class Cell {
  public:
    enum class Kind : uint8_t { Null, Absent, Unsigned, Signed, Real, Ticks, Flag, Text, Hex, Ids };
    using IdList = std::vector<std::optional<uint32_t>>;

    Cell() : kind_(Kind::Null), size_(0), whole_(0) {}
    Cell(std::nullptr_t) : Cell() {}
    Cell(bool flag) : kind_(Kind::Flag), size_(0), whole_(flag) {}
    template <std::unsigned_integral Whole>
    requires(!std::same_as<Whole, bool>) Cell(Whole whole) : kind_(Kind::Unsigned), size_(0), whole_(whole) {}
    template <std::signed_integral Whole>
    Cell(Whole whole) : kind_(Kind::Signed), size_(0), signed_(whole) {}
    Cell(double real) : kind_(Kind::Real), size_(0), real_(real) {}
    Cell(std::string_view text) : kind_(Kind::Text), size_(text.size()), text_(text.data()) {}
    Cell(const std::string& text) : Cell(std::string_view(text)) {}
    Cell(const char* text) : Cell(std::string_view(text)) {}
    template <class Value>
    Cell(const std::optional<Value>& value) : Cell() {
        if (value) *this = Cell(*value);
    }

    // Has no key in JSON; null elsewhere.
    static Cell absent() { return Cell(Kind::Absent); }
    // A time or a length in ticks of the clock, shown in seconds.
    static Cell ticks(int64_t ticks) {
        Cell cell(Kind::Ticks);
        cell.signed_ = ticks;
        return cell;
    }
    static Cell hex(std::span<const uint8_t> bytes) {
        Cell cell(Kind::Hex);
        cell.size_ = bytes.size();
        cell.bytes_ = bytes.data();
        return cell;
    }
    static Cell ids(const IdList& list) {
        Cell cell(Kind::Ids);
        cell.ids_ = &list;
        return cell;
    }

    Kind kind() const { return kind_; }
    bool empty() const { return kind_ == Kind::Null || kind_ == Kind::Absent; }
    uint64_t whole() const { return whole_; }
    int64_t signedWhole() const { return signed_; }
    double real() const { return real_; }
    std::string_view text() const { return {text_, size_}; }
    std::span<const uint8_t> bytes() const { return {bytes_, size_}; }
    const IdList& list() const { return *ids_; }

  private:
    explicit Cell(Kind kind) : kind_(kind), size_(0), whole_(0) {}
    Kind kind_;
    size_t size_;
    union {
        uint64_t whole_;
        int64_t signed_;
        double real_;
        const char* text_;
        const uint8_t* bytes_;
        const IdList* ids_;
    };
};

// How numbers of a column read in text and CSV. Id: 0x12ab. Percent: two decimals, blank for none. Verdict:
// "pass" or "FAIL".
enum class CellForm : uint8_t { Plain, Id, Percent, Verdict };

enum class RowForm { Json, Csv, Text };

class CellWriter {
  public:
    // terminal: no control byte goes out, whatever the form.
    CellWriter(RowForm form, bool terminal) : form_(form), terminal_(terminal) {}
    // The clock that ticks are of.
    void setClock(uint64_t ticksPerSecond);
    // Times and lengths have at most so many digits behind the point.
    static constexpr int mostDecimals = 9;

    void put(const Cell& cell, CellForm form, RowBuffer& to) const;
    void putText(std::string_view text, RowBuffer& to) const;

  private:
    void putTicks(int64_t ticks, RowBuffer& to) const;
    void putPeculiar(std::string_view text, RowBuffer& to) const;

    RowForm form_;
    bool terminal_;
    TimeBase times_;
    TickWriter clock_;
};
