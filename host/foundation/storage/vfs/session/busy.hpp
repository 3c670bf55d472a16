#pragma once

namespace foundation::storage::vfs {

/// Sets a flag while it lives. Internal to the session.
class Busy {
 public:
  explicit Busy(bool& flag) noexcept : flag_(flag) { flag_ = true; }
  ~Busy() { flag_ = false; }
  Busy(Busy const&) = delete;
  Busy& operator=(Busy const&) = delete;

 private:
  bool& flag_;
};

}  // namespace foundation::storage::vfs
