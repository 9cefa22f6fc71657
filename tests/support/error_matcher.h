// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ERROR_MATCHER_H_
#define TESTS_SUPPORT_ERROR_MATCHER_H_

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

#include "vxfoundation/exception.h"
#include "vxfoundation/persistent.h"

/// The line of a test that calls a helper, for its failure reports.
struct CallSite {
  const char* file;
  int line;

  static constexpr CallSite here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return {file, line};
  }
};

/// `body()` throws exactly an `Error`, not a class derived from it, with this text and number.
template <class Error, class Body>
void expectThrows(Body&& body, const std::wstring& text, long number,
                  CallSite site = CallSite::here()) {
  const testing::ScopedTrace trace(site.file, site.line, "expecting " + vfClassName(typeid(Error)));
  try {
    body();
  } catch (const Error& error) {
    EXPECT_EQ(vfClassName(typeid(error)), vfClassName(typeid(Error)));
    EXPECT_EQ(error.message(), text);
    EXPECT_EQ(error.errorNumber(), number);
    return;
  } catch (const vxExceptionWithString& error) {
    ADD_FAILURE() << "threw " << vfClassName(typeid(error)) << ": "
                  << testing::PrintToString(error.message());
    return;
  } catch (const vxException& error) {
    ADD_FAILURE() << "threw " << vfClassName(typeid(error));
    return;
  } catch (const std::exception& error) {
    ADD_FAILURE() << "threw " << vfClassName(typeid(error)) << ": " << error.what();
    return;
  }
  ADD_FAILURE() << "threw nothing";
}

/// The same with the number that every `Error` has.
template <class Error, class Body>
void expectThrows(Body&& body, const std::wstring& text, CallSite site = CallSite::here()) {
  expectThrows<Error>(body, text, Error().errorNumber(), site);
}

/// The same, and `object` equals afterwards what it was before.
template <class Error, class Object, class Body>
void expectRefused(const Object& object, Body&& body, const std::wstring& text,
                   CallSite site = CallSite::here()) {
  const Object before(object);
  expectThrows<Error>(body, text, site);
  const testing::ScopedTrace trace(site.file, site.line, "comparing with the copy from before");
  EXPECT_TRUE(object == before);
}

#endif  // TESTS_SUPPORT_ERROR_MATCHER_H_
