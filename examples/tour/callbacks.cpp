// Delegates from lambdas, member functions and shared objects.

#include <iostream>
#include <memory>
#include <string>

#include <tova/extras/callables.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::ustring8;

namespace {

class counter {
public:
    ~counter() { std::cout << "the counter ends with " << m_count << '\n'; }
    void add(int amount) { m_count += amount; }

private:
    int m_count = 0;
};

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: callbacks\n\nCalls lambdas through delegates.\n\nExit status: 0.\n";
        return 0;
    }
    // The lambda is copied into the delegate; `text` must outlive it.
    std::string text;
    auto collect = ex::delegate<void(const ustring8&)>(
        [&text](const ustring8& piece) { text += piece + "."; });
    collect.invoke("one");
    collect.invoke("two");
    std::cout << text << '\n';

    // A member function of an object that lives longer than the delegate.
    counter local;
    auto add_here = ex::delegate(local, &counter::add);
    add_here.invoke(2);
    add_here.invoke(3);

    // A delegate that keeps its object alive.
    auto shared = std::make_shared<counter>();
    auto add_there = ex::delegate(shared, &counter::add);
    shared.reset();
    add_there.invoke(40);
    std::cout << "still there\n";
    add_there = ex::delegate<void(int)>([](int) {});

    // Every copy of a delegate has its own copy of the lambda and of its captures.
    int calls = 0;
    auto number = ex::delegate<int()>([calls]() mutable { return ++calls; });
    auto copy = number;
    std::cout << number.invoke() << number.invoke() << copy.invoke() << '\n';
}
