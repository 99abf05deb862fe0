// Calls through delegates, copies of delegates, and copies of counted pointers.
#include <tova/functor/delegate.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/memory/pointers.hpp>

#include "cell.hpp"

#include <functional>
#include <memory>

#ifdef HAVE_BOOST_SMART_PTR
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif
#ifdef HAVE_BOOST_FUNCTION
#include <boost/function.hpp>
#endif

namespace {

using bench_support::cell;
using tova::functor::delegate_t;
using tova::functor::member_function_t;

struct counter {
    __attribute__((noinline)) int add(int value) { return sum = (sum + value) & 0xffff; }
    int sum = 0;
};

counter target;

using signature = int(int);
using ours = delegate_t<signature>;

ours bound() {
    return ours(member_function_t<counter, signature>(&target, &counter::add));
}

// Larger than the buffers that the peers have for small callables: like a delegate, they allocate.
struct large_callable {
    counter* object;
    int (counter::*member)(int);
    long more;
    int operator()(int value) const { return (object->*member)(value); }
};

const int calls = 1000;

template <typename Call>
auto repeated(const Call& call) {
    return [call] {
        int sum = 0;
        target.sum = 0;
        for (int i = 0; i < calls; ++i) {
            benchmark::ClobberMemory();  // so that no callable is known to the compiler
            sum += call(i);
        }
        return sum;
    };
}

struct direct {
    int operator()(int value) const { return target.add(value); }
};

void add_delegates() {
    const large_callable callable = {&target, &counter::add, 0};
    static ours held = bound();
    static std::function<signature> standard(callable);
    cell call("delegate/call", repeated([](int value) { return held.invoke(value); }));
    call.add("std_function", repeated([](int value) { return standard(value); }));
    call.add("floor", repeated(direct()));

    const auto ignored = [](const auto&, const auto&) { return true; };
    cell copy("delegate/copy", [] { return ours(held); });
    copy.add(
        "std_function", [] { return std::function<signature>(standard); }, ignored);
    // A copy as the interface defines it, through the common base class of all function objects.
    static const member_function_t<counter, signature> function(&target, &counter::add);
    const tova::generic::abilities::clone_ability* const base = &function;
    copy.add(
        "plain",
        [base] {
            using interface = tova::functor::function_type_interface<signature>;
            return std::unique_ptr<interface>(dynamic_cast<const interface&>(*base).do_clone());
        },
        ignored);
    copy.add(
        "floor", [callable] { return std::make_unique<large_callable>(callable); }, ignored);
#ifdef HAVE_BOOST_FUNCTION
    static boost::function<signature> boosted(callable);
    call.add("boost", repeated([](int value) { return boosted(value); }));
    copy.add(
        "boost", [] { return boost::function<signature>(boosted); }, ignored);
#endif
}

struct counted : tova::generic::abilities::reference_count_pointer_ability<counted> {
    virtual ~counted() {}
    int value = 7;
};

#ifdef HAVE_BOOST_SMART_PTR
struct boost_counted : boost::intrusive_ref_counter<boost_counted, boost::thread_unsafe_counter> {
    int value = 7;
};
#endif

// The minimum: a plain count that goes up and down, and a test for zero.
class plain_holder {
public:
    explicit plain_holder(counted* object) : m_object(object) {}
    plain_holder(const plain_holder& other) : m_object(other.m_object) { ++m_object->count; }
    ~plain_holder() {
        if (--m_object->count == 0)
            delete m_object;
    }

private:
    counted* m_object;
};

void add_pointers() {
    const auto ignored = [](const auto&, const auto&) { return true; };
    const tova::memory::pointers::rc_pointer<counted> held(new counted);
    cell copy("pointer/copy", [held] { return held; });
    counted* const object = new counted;
    object->count = 1;
    copy.add(
        "floor", [holder = plain_holder(object)] { return holder; }, ignored);
    copy.add(
        "shared_ptr", [shared = std::make_shared<int>(7)] { return shared; }, ignored);
#ifdef HAVE_BOOST_SMART_PTR
    const boost::intrusive_ptr<boost_counted> boosted(new boost_counted);
    copy.add(
        "boost", [boosted] { return boosted; }, ignored);
#endif
}

const bool added = [] {
    add_delegates();
    add_pointers();
    return true;
}();

}  // namespace
