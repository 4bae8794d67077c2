#pragma once

namespace trelv {

/// Sets a mark while it lives.
class Marked {
 public:
  explicit Marked(bool& mark) : mark_(mark) { mark = true; }
  Marked(const Marked&) = delete;
  Marked& operator=(const Marked&) = delete;
  ~Marked() { mark_ = false; }

 private:
  bool& mark_;
};

}  // namespace trelv
