// The licence an environment holds. This build grants every request; the interface is what a stricter one would need:
// a handle that is acquired once per environment, asked before each solve, and can be given back early.
#pragma once

namespace zorvex {

class License {
 public:
  // 0, or an error code with the licence not held.
  [[nodiscard]] int acquire();
  // Gives the licence back; asking afterwards fails. Releasing twice is harmless.
  void release() { held_ = false; }
  // 0 while held, else kErrorNoLicense.
  [[nodiscard]] int status() const;

 private:
  bool held_ = false;
};

}  // namespace zorvex
