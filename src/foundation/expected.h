// expected.h: A value or the error that prevented it, shaped like std::expected.
#pragma once

#include <cassert>
#include <type_traits>
#include <utility>
#include <variant>

namespace corvetta {

// A value or the error that prevented it: the shape of C++23's std::expected, kept small so the
// code can move to the standard type unchanged once the toolchain has it.

template <class E>
struct Unexpected {
    E error;
};

template <class E>
Unexpected<std::decay_t<E>> unexpected(E&& error) {
    return {std::forward<E>(error)};
}

template <class T, class E>
class Expected {
public:
    Expected(T value) : storage_(std::in_place_index<0>, std::move(value)) {}
    template <class G>
    Expected(Unexpected<G> u) : storage_(std::in_place_index<1>, E(std::move(u.error))) {}

    bool has_value() const { return storage_.index() == 0; }
    explicit operator bool() const { return has_value(); }

    T& value() & {
        assert(has_value());
        return std::get<0>(storage_);
    }
    const T& value() const& {
        assert(has_value());
        return std::get<0>(storage_);
    }
    T&& value() && {
        assert(has_value());
        return std::get<0>(std::move(storage_));
    }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const E& error() const {
        assert(!has_value());
        return std::get<1>(storage_);
    }

    template <class U>
    T value_or(U&& fallback) const& {
        return has_value() ? value() : static_cast<T>(std::forward<U>(fallback));
    }

private:
    std::variant<T, E> storage_;
};

template <class E>
class Expected<void, E> {
public:
    Expected() = default;
    template <class G>
    Expected(Unexpected<G> u) : error_(E(std::move(u.error))), failed_(true) {}

    bool has_value() const { return !failed_; }
    explicit operator bool() const { return has_value(); }
    const E& error() const {
        assert(failed_);
        return error_;
    }

private:
    E error_{};
    bool failed_ = false;
};

}  // namespace corvetta
