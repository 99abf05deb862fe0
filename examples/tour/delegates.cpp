// Delegates: a callback that a class offers, bound to a member function or to any function object.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::functor::delegate_t;
using tova::functor::function_type_interface;
using tova::functor::member_function_t;
using tova::strings::ustring8;

namespace {

// Offers an event. Calling an empty delegate does nothing, so nobody has to listen.
class button {
public:
    delegate_t<void(const ustring8&)> on_click;
    void click() { on_click.invoke("button 1"); }
};

class window {
public:
    void clicked(const ustring8& source) { std::cout << "window: " << source << '\n'; }
};

// A function object of the program's own: any state, and three operations.
class counter : public function_type_interface<void(const ustring8&)> {
public:
    explicit counter(int& count) : m_count(count) {}
    void invoke(const ustring8&) override { ++m_count; }
    bool do_equal(const function_type_interface& other) const override { return this == &other; }
    counter* do_clone() const override { return new counter(m_count); }

private:
    int& m_count;
};

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: delegates\n\n"
                     "Binds a callback to a member function and to a function object.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    button one;
    one.click();
    std::cout << "empty: " << (one.on_click.is_empty() ? "yes" : "no") << '\n';

    // The window is not owned and has to outlive the button.
    window main_window;
    one.on_click = member_function_t<window, void(const ustring8&)>(&main_window, &window::clicked);
    one.click();

    int clicks = 0;
    one.on_click = counter(clicks);  // the delegate owns a clone
    one.click();
    one.click();
    std::cout << "clicks: " << clicks << '\n';
}
