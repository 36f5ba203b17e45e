// What other processes may ask this one: values by their names.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

class NameValueResolver {
  public:
    // In a text, ${NAME} stands for the value of that name. An earlier value of the name is replaced.
    void set(const std::string& name, std::string value);
    // A value that is made when it is asked for; taken as it is.
    void set(const std::string& name, std::function<std::string()> value);

    // The value with its names expanded; nothing for a name that is not there.
    std::optional<std::string> valueOf(const std::string& name) const;
    // A name that is not there, or that leads back to itself, stays as it is written. What would be longer
    // than mostBytes is cut there.
    std::string expand(std::string_view text) const;

    static constexpr size_t mostBytes = size_t{1} << 20;

  private:
    struct Value {
        std::string text;
        std::function<std::string()> make;
    };
    struct Expansion;
    void expandInto(std::string_view text, Expansion& expansion) const;
    void appendName(std::string_view written, Expansion& expansion) const;

    std::map<std::string, Value, std::less<>> values_;
};
