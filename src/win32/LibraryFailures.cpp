// What the C++ library calls when it has to raise a failure. Its own functions, which these stand
// in for, hold on to a second string class and to the source of random numbers: 50 KB that nothing
// else here needs. A function that is missing here brings them back, and the linker then finds all
// others twice.
#include <exception>
#include <new>

namespace trelv::win32 {
namespace {

class LibraryFailure : public std::exception {
 public:
  /// `text` lives as long as the program.
  explicit LibraryFailure(const char* text) : text_(text) {}
  const char* what() const noexcept override { return text_; }

 private:
  const char* text_;
};

}  // namespace
}  // namespace trelv::win32

// The library calls them by these names.
namespace std {

void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_array_new_length(); }
void __throw_logic_error(const char* text) { throw trelv::win32::LibraryFailure(text); }
void __throw_length_error(const char* text) { throw trelv::win32::LibraryFailure(text); }
void __throw_out_of_range_fmt(const char* text, ...) { throw trelv::win32::LibraryFailure(text); }

}  // namespace std
