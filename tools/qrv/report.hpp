// What a command tells: lines for a person, or one JSON object with every figure in them.
#pragma once

#include <concepts>
#include <cstdio>
#include <fmt/format.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "matrix_file/matrix_file.hpp"

namespace tools {

// A value of a line, and its name in the object.
template <class T>
struct Figure {
    const char* name;
    T value;
};
template <class T>
Figure<T> figure(const char* name, T value) {
    return {name, value};
}

// A text as one line that gives a terminal no orders: '?' for characters that control it and for bytes that are none.
std::string printable(std::string_view text);

class JsonObject;

// Values as JSON: numbers in as many digits as give them back, and null for what is not finite; a complex number as an
// array of two; a matrix as an array of its rows, or of its elements if it has one column.
std::string json(const std::string& text);
std::string json(double value);
std::string json(float value);
std::string json(SingleComplex value);
std::string json(const AnyMatrix& matrix);
std::string json(const JsonObject& object);
template <std::integral T>
std::string json(T value) {
    if constexpr (std::is_same_v<T, bool>)
        return value ? "true" : "false";
    else
        return std::to_string(value);
}
template <class T>
std::string json(const std::vector<T>& values) {
    std::string text;
    for (const T& value : values)
        text += (text.empty() ? "" : ", ") + json(value);
    return "[" + text + "]";
}

// The name of a label in an object: "Right vectors" becomes "right_vectors".
std::string member_name(std::string label);

class JsonObject {
public:
    template <class T>
    JsonObject& add(const std::string& name, const T& value) {
        return add_text(name, json(value));
    }

private:
    friend std::string json(const JsonObject& object);
    JsonObject& add_text(const std::string& name, const std::string& value);

    std::string members;
};

// On standard output; on standard error if a result goes to standard output, which must not be mixed with it.
class Report {
public:
    // `outputs`: the names that the command line gives to results.
    Report(bool wantsJson, std::initializer_list<std::string> outputs);

    bool as_json() const { return isJson; }

    // A part of the text. Figures among the arguments are members of the object, too.
    template <class... Arguments>
    void print(fmt::format_string<Arguments...> format, const Arguments&... arguments) {
        (add_figure(arguments), ...);
        if (!isJson)
            fmt::vprint(stream, format, fmt::make_format_args(arguments...));
    }

    // What the object alone has.
    template <class T>
    void add(const char* name, const T& value) {
        object.add(name, value);
    }

    // The line about a matrix that was read.
    void matrix(const char* label, const std::string& path, const MatrixFile& file);

    // A result: written to its file, and the file named; without one it stands in the object.
    void result(const char* label, std::optional<OutputFile>& file, const AnyMatrix& matrix, Format format,
                const std::string& comment);
    void picture(OutputFile& file, const std::string& svg);

    // One line if a matrix with this condition number counts as singular, about the result that it makes unsure.
    void singular(double condition, const char* result);

    // The end, which prints the object.
    void close();

private:
    template <class T>
    void add_figure(const Figure<T>& one) {
        object.add(one.name, one.value);
    }
    template <class T>
    void add_figure(const T&) {}

    bool isJson;
    std::FILE* stream;
    JsonObject object;
};

} // namespace tools

template <class T>
struct fmt::formatter<tools::Figure<T>> : fmt::formatter<T> {
    template <class Context>
    auto format(const tools::Figure<T>& figure, Context& context) const {
        if constexpr (std::is_same_v<T, std::string>)
            return fmt::formatter<T>::format(tools::printable(figure.value), context);
        else
            return fmt::formatter<T>::format(figure.value, context);
    }
};
