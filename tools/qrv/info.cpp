// qrv info: what is running here, and why.
#include <fmt/core.h>
#include <qrv/service.h>

#include "command.hpp"

namespace tools {

void add_info(CLI::App& program) {
    program.add_subcommand("info", "Tells what is running: processor class, kernels, caches, threads, and why")
        ->callback([] {
            std::string text(static_cast<std::size_t>(qrv_serv_get_configuration(nullptr, 0)) + 1, '\0');
            qrv_serv_get_configuration(text.data(), static_cast<int>(text.size()));
            text.pop_back();
            fmt::print("{}", text);
        });
}

} // namespace tools
