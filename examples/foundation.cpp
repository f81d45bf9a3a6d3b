// An object that counts its references, a text that is shared, and values as traces show them.
#include <iostream>
#include <utility>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

TARVCORE_SOURCE_FILE("$Id: //examples/foundation.cpp#1 $");

namespace {

class Session : public RefCounted<AtomicRefCount> {
public:
    using Ptr = RefCountPtr<const Session>;

    static Ptr create(const char* user) { return new Session(SourceString::create_copy(user)); }

    const SourceString& user() const { return user_; }

private:
    explicit Session(SourceString user) : user_(std::move(user)) {}
    ~Session() override { std::cout << "the session of " << user_ << " ends\n"; }

    SourceString user_;
};

}  // namespace

int main() {
    Session::Ptr session = Session::create("ann");
    Session::Ptr other = session;  // counted, not copied
    session.clear();
    std::cout << "still there: " << streamers::String(other->user().text()) << '\n';

    const SourceString shared = other->user();  // the characters are shared
    other.clear();
    std::cout << "the text outlives it: " << shared << '\n';

    const SourceString literal("never copied", true);
    std::cout << "one is a reference, the other is not: "
              << streamers::Boolean(literal.is_reference()) << ", "
              << streamers::Boolean(shared.is_reference()) << '\n';

    const SourceLocation here = TARVCORE_LOCATION("main()");
    std::cout << here.function() << " in " << here.file_path() << '\n'
              << streamers::HexDump("tarv", 4, nullptr, nullptr);
}
