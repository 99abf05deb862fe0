// Argument lists: values with names, found by name or by position.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::generic::argument;
using tova::generic::varg_list;

namespace {

// A function that takes any number of named arguments and reads those it knows.
void order_coffee(const varg_list& wishes) {
    const int cups = wishes.has_argument("cups") ? wishes["cups"].value().as_int() : 1;
    std::cout << cups << (cups == 1 ? " cup" : " cups");
    // A name that is not there gives `nil_argument`, whose string is empty.
    if (wishes["milk"].value().as_bool())
        std::cout << " with milk";
    std::cout << wishes["to"].value().as_string() << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: arguments\n\n"
                     "Builds argument lists and reads them.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    order_coffee(varg_list());
    order_coffee(varg_list(argument("cups", 2), argument("milk", "yes")));

    varg_list list;
    list.push_back("to", " for Mia");
    list.push_back("cups", 3);
    const bool is_added = list.push_back("cups", 4);  // a name occurs once
    std::cout << "second \"cups\" added: " << (is_added ? "yes" : "no") << '\n';
    order_coffee(list);

    list.push_back(argument(2.5));  // no name: reached by position
    std::cout << list.count() << " arguments\n";
    for (const argument& one : list)
        std::cout << "  " << (one.has_name() ? one.name() : "(no name)") << " = "
                  << one.value().as_string() << '\n';

    list.erase("to");
    std::cout << "first is now " << list.at(0ul).name() << '\n';
}
