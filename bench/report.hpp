// What a run leaves: a table, a CSV file, a plot for each thread count.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "case.hpp"
#include "measure.hpp"

namespace bench {

struct Field {
    std::vector<std::string> ours, peers, peaks; // names of contestants, in the order of the columns
};

struct Outcome {
    Case work;
    Timings timings;
    std::map<std::string, std::string> out; // the libraries that took no part, and why: absent, wrong
};

// The name under which a peak takes part in a contest.
inline std::string peak_contestant(const std::string& peak) {
    return "peak " + peak;
}

// So does a form of ours on one thread where the others run on several.
inline std::string one_thread_contestant(const std::string& form) {
    return form + " on one thread";
}

// The table comes line by line while the run goes on: a head, then for each case a row for each form of ours.
std::string table_head(const Field& field);
std::string table_rows(const Field& field, const Outcome& outcome);

std::string csv_head();
std::string csv_rows(const Outcome& outcome);

// The speed over n of a plot's cases, all of one thread count. False if that is no curve.
bool write_plot(const std::filesystem::path& path, const std::string& title, const Field& field,
                const std::vector<Outcome>& outcomes);

} // namespace bench
