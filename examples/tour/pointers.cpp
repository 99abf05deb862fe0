// Counted pointers: objects that carry their own use count and know whether they are on the heap.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::memory::pointers::rc_pointer;

namespace {

// The base brings the count. A virtual destructor lets an rc_pointer hold derived shapes too.
class shape : public tova::generic::abilities::reference_count_pointer_ability<shape> {
public:
    virtual ~shape() = default;
    virtual double area() const = 0;
};

class square : public shape {
public:
    // A factory sets the heap mark: only marked objects are deleted by the last holder.
    static square* create(double side) {
        square* const object = new square(side);
        object->allocated = true;
        return object;
    }
    explicit square(double side) : m_side(side) {}
    ~square() override { std::cout << "square of " << m_side << " is gone\n"; }
    double area() const override { return m_side * m_side; }

private:
    double m_side;
};

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: pointers\n\n"
                     "Shares objects among counted pointers.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    rc_pointer<shape> first = square::create(3);
    {
        const rc_pointer<shape> second = first;
        std::cout << "holders: " << second->count << ", area: " << second->area() << '\n';
    }
    std::cout << "holders: " << first->count << '\n';

    first = square::create(2);  // the first square had no other holder
    std::cout << "area: " << first->area() << '\n';

    // An automatic object may be held as well. It has no heap mark and is never deleted.
    square local(5);
    first = &local;
    std::cout << "area: " << first->area() << '\n';
    first = nullptr;
    std::cout << "held: " << (first ? "yes" : "no") << '\n';
}
