// qrv info: what is running here, and why.
#include <qrv/service.h>
#include <sstream>

#include "command.hpp"
#include "report.hpp"

namespace tools {

namespace {

// Lines of a name, two spaces or more, and what is so.
void run(bool wantsJson) {
    std::string text(static_cast<std::size_t>(qrv_serv_get_configuration(nullptr, 0)) + 1, '\0');
    qrv_serv_get_configuration(text.data(), static_cast<int>(text.size()));
    text.pop_back();
    Report report(wantsJson, {});
    report.print("{}", text);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t end = line.find("  "), value = line.find_first_not_of(' ', end);
            value != std::string::npos)
            report.add(member_name(line.substr(0, end)).c_str(), line.substr(value));
    report.close();
}

} // namespace

void add_info(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("info", "Tells what is running: processor class, kernels, caches, threads, and why");
    const auto wantsJson = std::make_shared<bool>(false);
    add_json(*command, *wantsJson);
    command->callback([wantsJson] { run(*wantsJson); });
}

} // namespace tools
