// Numbers in files and parameter texts have a decimal point, whatever locale the program has chosen.
#pragma once

#include <locale.h>
#include <clocale>

namespace zorvex {

// While it lives, the calling thread reads and writes numbers in the C locale.
class CNumericLocale {
 public:
  CNumericLocale() : locale_(newlocale(LC_ALL_MASK, "C", nullptr)), saved_(uselocale(locale_)) {}
  ~CNumericLocale() {
    uselocale(saved_);
    if (locale_ != nullptr) freelocale(locale_);
  }
  CNumericLocale(const CNumericLocale&) = delete;
  CNumericLocale& operator=(const CNumericLocale&) = delete;

 private:
  locale_t locale_;  // null, and then without effect, when the system has no memory for it
  locale_t saved_;
};

}  // namespace zorvex
