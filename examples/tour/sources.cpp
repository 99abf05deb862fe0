// Sources of one's own: defaults in code, an alias, and an item that computes its values.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::config::base_config_item;
using tova::config::config_item_list;
using tova::config::config_manager;
using tova::config::config_node;
using tova::config::std_config_dispatch;
using tova::config::user_item;
using tova::types::variant;

namespace {

// A source sets its keys in `load`. The name is what `get_config_item` finds it by.
class machine_item : public base_config_item {
public:
    machine_item() { id = "machine"; }
    bool load() override {
        set("machine.cores", variant(2), 0);
        return true;
    }
    bool load(const config_item_list&) override { return load(); }
    machine_item* clone() const override {
        machine_item* const copy = new machine_item(*this);
        copy->allocated = true;
        return copy;
    }
};

// The standard sources, then the machine's values, then defaults, which are asked last.
class sources : public std_config_dispatch {
public:
    using std_config_dispatch::std_config_dispatch;
    bool setup(config_item_list& items) const override {
        std_config_dispatch::setup(items);
        items.push_back(machine_item().clone());
        user_item defaults;
        defaults.set("worker.count", variant("machine.cores"), 4);  // bit 2: an alias of that key
        defaults.set("worker.name", variant("builder"), 0);
        items.push_back(defaults.clone());
        return true;
    }
    sources* clone() const override { return new sources(*this); }
};

void print(const char* title, int count, const char* const* arguments) {
    const char* const environment[] = {nullptr};
    config_manager settings;
    settings.init(sources(count, arguments, environment, "", ""));
    settings.load();
    std::cout << title << settings.get_value("worker.count", 1).as_string() << ' '
              << settings.get_value("worker.name", "").as_string() << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: sources\n\n"
                     "Adds two sources of its own after the standard ones.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    const char* const arguments[] = {"program", "-worker.count=8"};
    print("defaults:     ", 1, arguments);
    print("command line: ", 2, arguments);
}
