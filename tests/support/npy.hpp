// Files of NumPy as bytes, built beside the writer under test.
#pragma once

#include <initializer_list>
#include <string>
#include <type_traits>

namespace qrv::test {

// What a dictionary of NumPy says for elements of this type.
inline std::string npy_header(const std::string& descr, const std::string& shape, bool inColumns = false) {
    return "{'descr': '" + descr + "', 'fortran_order': " + (inColumns ? "True" : "False") + ", 'shape': " + shape +
           ", }";
}

template <class Part = float>
std::string npy(const std::string& header, std::initializer_list<std::type_identity_t<Part>> parts, int version = 1) {
    std::string text = std::string("\x93NUMPY") + static_cast<char>(version) + '\0';
    for (int byte = 0; byte < (version == 1 ? 2 : 4); ++byte)
        text += static_cast<char>(header.size() >> (8 * byte) & 0xFFU);
    text += header;
    for (const Part part : parts)
        text.append(reinterpret_cast<const char*>(&part), sizeof part);
    return text;
}

} // namespace qrv::test
