// Integer expressions of conditions: the operators of C on 64-bit signed numbers,
//
//     ?:  ||  &&  |  ^  &  == !=  < <= > >=  << >>  + -  * / %  ! ~ + -  ( )
//
// numbers in the manner of C, names, "${name}", and function calls. Arithmetic wraps; a division by zero or a
// shift by less than 0 or more than 63 bits is an error. What && || ?: leave out is parsed and not evaluated.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/result.h"

// Knows the names and functions that an expression may use. A value is only given where nothing failed.
class ut_simple_integer_evaluator_client_interface {
  public:
    virtual ~ut_simple_integer_evaluator_client_interface() = default;
    virtual Result EvaluateName(std::string_view name, int64_t& value) = 0;
    // The arguments are texts, trimmed, as they stand in the expression with their quotes.
    virtual Result EvaluateFunction(std::string_view name, const std::vector<std::string_view>& arguments,
                                    int64_t& value) = 0;

    // How deep the expressions now being evaluated are nested, those that EvaluateName starts included.
    int evaluation_depth = 0;
};

// The value of the whole text. Fails as the client does, or with "parse error: near: \"%s\"" and the text
// from the place of the fault on; the value is 0 then.
Result evaluate_integer(std::string_view text, ut_simple_integer_evaluator_client_interface& client,
                        int64_t& value);

// Letters, digits and "_", as in names of macros.
bool is_identifier_character(char c);
