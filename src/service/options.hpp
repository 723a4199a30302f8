// Character options: compared by their first character, without regard to case and without a locale.
#pragma once

// 1 if the first characters of a and b are equal when letters a to z are folded to upper case. Nothing else of
// the texts is read; the lengths are ignored.
extern "C" int qrv_serv_lsame(const char* a, const char* b, int la, int lb);

namespace qrv {

constexpr unsigned char fold_case(char letter) {
    const auto c = static_cast<unsigned char>(letter);
    return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c;
}

constexpr bool same_letter(char a, char b) {
    return fold_case(a) == fold_case(b);
}

} // namespace qrv
