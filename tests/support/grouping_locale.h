// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_GROUPING_LOCALE_H_
#define TESTS_SUPPORT_GROUPING_LOCALE_H_

#include <locale>
#include <string>

/// While it lives, the program's locale writes 1234.5 as 1'234,5 in narrow and wide text.
class GroupingLocale {
 public:
  GroupingLocale() : before_(std::locale()) {
    const std::locale narrow(std::locale::classic(), new Punctuation<char>);
    std::locale::global(std::locale(narrow, new Punctuation<wchar_t>));
  }
  GroupingLocale(const GroupingLocale&) = delete;
  GroupingLocale& operator=(const GroupingLocale&) = delete;
  ~GroupingLocale() { std::locale::global(before_); }

 private:
  template <class Character>
  class Punctuation : public std::numpunct<Character> {
   protected:
    Character do_decimal_point() const override { return ','; }
    Character do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
  };

  std::locale before_;
};

#endif  // TESTS_SUPPORT_GROUPING_LOCALE_H_
