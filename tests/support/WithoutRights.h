#pragma once

#include <stdexcept>

#include <unistd.h>

namespace quibel::test {

/// An ordinary person's rights while it lives, where the tests run with all of them.
class WithoutRights {
 public:
  WithoutRights() {
    constexpr uid_t ordinary = 65534;
    if (::getuid() == 0 && ::seteuid(ordinary) != 0)
      throw std::runtime_error("cannot become another user");
  }
  ~WithoutRights() {
    if (::getuid() == 0) static_cast<void>(::seteuid(0));
  }
  WithoutRights(const WithoutRights&) = delete;
  WithoutRights& operator=(const WithoutRights&) = delete;
};

}  // namespace quibel::test
