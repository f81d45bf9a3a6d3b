#include "tarvcore/error_exception.h"

#include <boost/exception/all.hpp>

#include <exception>
#include <string>

#include "bench/support/errors.h"
#include "bench/support/row.h"
#include "bench/topics.h"

TARVCORE_SOURCE_FILE("$Id: //bench/error_exception_bench.cpp#1 $");

namespace tarv_bench {
namespace {

using namespace tarvcore;

// One frame, which is unwound: the caller catches.
template <class Throw>
[[gnu::noinline]] void frame(Throw& do_throw) {
    do_throw();
    asm volatile("");  // no jump instead of the call
}

template <class Exception, class Throw>
void throw_and_catch(benchmark::State& state, Throw do_throw) {
    measure(state, [&] {
        try {
            frame(do_throw);
        } catch (const Exception& e) {
            keep(e);
        }
    });
}

struct Nothing {};

struct BoostException : virtual boost::exception, virtual std::exception {};
using Code = boost::error_info<struct CodeTag, std::string>;
using Message = boost::error_info<struct MessageTag, std::string>;
using Function = boost::error_info<struct FunctionTag, std::string>;

}  // namespace

void add_error_exception_rows() {
    add_row("throw, catch: three texts", "1 x of three std::string",
            {{"ErrorException",
              [](auto& state) {
                  throw_and_catch<ErrorException>(state, [] {
                      throw_error(error::tarvcore_absoluteTime_invalidUtcString, message_text,
                                  TARVCORE_LOCATION(function_text));
                  });
              }},
             {"three std::string",
              [](auto& state) {
                  throw_and_catch<std::exception>(state, [] { throw ThreeStringsException(); });
              }},
             {"boost::exception",
              [](auto& state) {
                  throw_and_catch<boost::exception>(state, [] {
                      throw BoostException()
                          << Code(code_text) << Message(message_text) << Function(function_text);
                  });
              }},
             {"an empty struct",
              [](auto& state) { throw_and_catch<Nothing>(state, [] { throw Nothing(); }); }}});

    add_row("throw, catch: with a cause", "0.45 x",
            {{"ErrorException",
              [](auto& state) {
                  throw_and_catch<ErrorException>(state, [] {
                      throw_error(
                          error::tarvcore_absoluteTime_invalidUtcString, message_text,
                          TARVCORE_LOCATION(function_text),
                          ErrorInfo::create(error::tarvcore_absoluteTime_range, message_text,
                                            TARVCORE_LOCATION(function_text)));
                  });
              }},
             {"std::throw_with_nested", [](auto& state) {
                  throw_and_catch<std::exception>(state, [] {
                      try {
                          throw ThreeStringsException();
                      } catch (...) {
                          std::throw_with_nested(ThreeStringsException());
                      }
                  });
              }}});
}

}  // namespace tarv_bench
