// The named move.
#pragma once

namespace tarvcore {

// Names an object whose contents may be taken.  `x.transfer()` makes one, and a constructor or
// assignment that accepts a TransferSource takes the contents and leaves `x` empty, without copying
// text or touching a reference count.  A transfer source that nobody consumes changes nothing; it
// owns nothing and must not outlive `x`.
//
//     SourceString text = SourceString::create_copy(buffer);
//     SourceString other(text.transfer());       // `text` is empty now
//
// Types that take transfers also have move construction and move assignment of the same effect.
template <class T>
class TransferSource {
public:
    // Types have an operation `transfer` that makes one.
    constexpr explicit TransferSource(T& source) : source_(&source) {}

    constexpr T& source() const { return *source_; }

private:
    T* source_;
};

}  // namespace tarvcore
