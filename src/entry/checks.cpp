#include "entry/checks.hpp"

#include <algorithm>
#include <array>

namespace qrv::entry {
namespace {

using Reporter = void(const char* name, const int* info, int length);

void report(Reporter* reporter, std::string_view name, int position) {
    std::array<char, 20> letters; // no report shows more
    letters.fill(' ');
    const std::size_t count = std::min(name.size(), letters.size());
    std::copy_n(name.begin(), count, letters.begin());
    reporter(letters.data(), &position, static_cast<int>(std::max<std::size_t>(count, 6)));
}

} // namespace

void report_to_xerbla(std::string_view name, int position) {
    report(XERBLA, name, position);
}
void report_through_slot(std::string_view name, int position) {
    report(qrv_serv_xerbla, name, position);
}

} // namespace qrv::entry
