#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace trelv::kit {

/// What may stand on the command line of one verb: declared once, it reads the arguments into the
/// places that it was given and prints the help. Options begin with "--" and may stand anywhere; a
/// value follows behind a blank or "="; behind "--" there are no more options.
class Syntax {
 public:
  /// Declares "--NAME", which sets `place`.
  void flag(const std::string& name, const std::string& help, bool& place);
  /// "--NAME VALUE"; the last one counts. `valueName` is for the help.
  void value(const std::string& name, const std::string& valueName, const std::string& help,
             std::string& place);
  /// "--NAME VALUE,VALUE"; all of them are gathered.
  void list(const std::string& name, const std::string& valueName, const std::string& help,
            std::vector<std::string>& place);
  /// The next argument, which must not be missing.
  void argument(const std::string& name, const std::string& help, std::string& place);
  /// All further arguments, at least so many.
  void rest(const std::string& name, const std::string& help, std::size_t least,
            std::vector<std::string>& place);
  /// What stands behind the first argument and is none of the declared options is an argument, also
  /// where it begins with a hyphen: it is meant for another program.
  void argumentsEndOptions() { argumentsEndOptions_ = true; }

  /// Reads the arguments; raises WrongUsage.
  void read(const std::vector<std::string>& arguments) const;

  /// "VERB [OPZIONI] HOST PACK…" and what each of them means, with the verb's summary in front.
  std::string help(const std::string& verb, const std::string& summary) const;

 private:
  struct Option {
    std::string name;
    /// Empty for a flag.
    std::string valueName;
    std::string help;
    std::function<void(const std::string&)> take;
  };
  struct Argument {
    std::string name;
    std::string help;
    std::size_t least;
    bool many;
    std::function<void(const std::string&)> take;
  };

  std::vector<std::string> optionsFirst(const std::vector<std::string>& arguments) const;
  void place(const std::vector<std::string>& arguments) const;

  std::vector<Option> options_;
  std::vector<Argument> arguments_;
  bool argumentsEndOptions_ = false;
};

}  // namespace trelv::kit
