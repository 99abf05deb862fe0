// Exceptions: the library's own tree, and how to pass its errors on as std::runtime_error.

#include <iostream>
#include <stdexcept>
#include <string>

#include <tova/tova.hpp>

namespace exceptions = tova::exceptions;

namespace {

// They are no `std::exception`, so a handler for that class alone does not catch them.
template <typename Action>
void with_standard_errors(Action action) {
    try {
        action();
    } catch (const exceptions::exception& error) {
        throw std::runtime_error(error.get_message());
    }
}

void set_an_impossible_day() {
    tova::system::date_time::date(32, 1, 2026);
}

// A program raises them as the library does: message, line, file and function.
void withdraw(int balance, int amount) {
    if (amount > balance)
        throw exceptions::underflow_error("balance is too low", __LINE__, "exceptions.cpp",
                                          "withdraw");
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: exceptions\n\n"
                     "Catches exceptions of the library by class, and converts one.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    try {
        set_an_impossible_day();
    } catch (const exceptions::out_of_range& error) {
        std::cout << "out_of_range: " << error.get_message() << '\n';
    }
    try {
        withdraw(10, 20);
    } catch (const exceptions::runtime_error& error) {  // a base of underflow_error
        std::cout << "runtime_error: " << error.get_message() << '\n';
    }
    try {
        with_standard_errors(set_an_impossible_day);
    } catch (const std::exception& error) {
        std::cout << "std::exception: " << error.what() << '\n';
    }
}
