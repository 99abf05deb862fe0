#include "trial.hpp"

#include <fstream>

namespace proof {

scenarios all_scenarios() {
    scenarios all;
    add_strings(all);
    add_numbers(all);
    add_values(all);
    add_foundation(all);
    add_units_and_dates(all);
    add_documents(all);
    add_messages(all);
    add_settings(all);
    add_buffers(all);
    add_files(all);
    add_extras(all);
    return all;
}

void write_file(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
}

}  // namespace proof
