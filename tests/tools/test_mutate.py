"""The faults that tools/mutate puts into the program: what is changed, and what is left alone."""

import os
import pathlib
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "tests" / "mutate"))

import mutants  # noqa: E402
import weave  # noqa: E402

SOURCE = '''#include "base/Text.h"  // "no text"

namespace trelv {
static_assert(1 == 1, "told by the compiler");
std::vector<std::string> names(std::string&& from, int count) {
  std::string result = "one";
  result.clear();
  if (count < 10 && !from.empty()) {
    ++count;
    throw Failure(7);
  }
  if (const auto found = find(from); found) {
    result = "a" + result;
  }
  while (count != 3) {
    run([] { stop(); });
  }
  return count - 1 > 0 ? true : names;  // count == 2
}
}  // namespace trelv
'''


def told(source=SOURCE):
    return {mutant.told().partition(": ")[2] for mutant in mutants.mutants_of("src/a.cpp", source)}


def test_each_kind_of_fault_is_made_where_it_can_be():
    assert told() == {
        'text: "one" -> "one#"', 'text: "a" -> "a#"',
        "statement: result.clear(); -> nothing", "statement: ++count; -> nothing",
        "statement: throw Failure(7); -> nothing", 'statement: result = "a" + result; -> nothing',
        "comparison: < -> <=", "comparison: != -> ==", "comparison: > -> >=",
        "logic: && -> ||", "arithmetic: ++ -> --", "arithmetic: - -> +",
        "constant: 10 -> 11", "constant: 7 -> 8", "constant: 3 -> 4", "constant: 1 -> 2", "constant: 0 -> 1",
        "constant: true -> false",
        "condition: count < 10 && !from.empty() -> !(count < 10 && !from.empty())",
        "condition: ! -> nothing", "condition: found -> !(found)"}


def test_a_fault_changes_its_place_and_nothing_else():
    for mutant in mutants.mutants_of("src/a.cpp", SOURCE):
        changed = mutant.applied(SOURCE)
        assert changed != SOURCE
        assert changed[:mutant.start] == SOURCE[:mutant.start]
        assert changed.endswith(SOURCE[mutant.end:])
        assert SOURCE.splitlines()[mutant.line - 1].find(mutant.before.splitlines()[0]) >= 0


def test_each_unit_takes_part_and_the_same_seed_draws_the_same():
    by_unit = {f"src/{name}.cpp": mutants.mutants_of(f"src/{name}.cpp", SOURCE * size)
               for name, size in (("small", 1), ("middle", 4), ("large", 16))}
    drawn = mutants.sample(by_unit, 5)
    assert len(drawn) == sum(len(of_unit) for of_unit in by_unit.values())
    counts = {unit: sum(mutant.path == unit for mutant in drawn[:28]) for unit in by_unit}
    assert counts == {"src/small.cpp": 4, "src/middle.cpp": 8, "src/large.cpp": 16}
    assert drawn == mutants.sample(by_unit, 5)
    assert drawn[:28] != mutants.sample(by_unit, 6)[:28]


def test_a_mutant_keeps_its_name_when_lines_come_above_it():
    before, behind = (mutants.mutants_of("src/a.cpp", source) for source in (SOURCE, "\n" + SOURCE))
    assert [mutant.name for mutant in before] == [mutant.name for mutant in behind]
    assert len({mutant.name for mutant in before}) == len(before)


# The comments tell what becomes of the places.
SLEEPING = '''#include <cstdio>

namespace {

constexpr const char* kName = "one";  // with "#"
constexpr int twice(int value) { return value * 2; }  // for the compiler

struct Counter {
  explicit Counter(int from) : count{from} { check(); }
  void check() const {}
  int next() { return ++count; }  // --
  int count;
};

int sum(int from, int to) {
  int result = 0;
  while (from < to) {  // <=
    switch (from) {
      case 2:
        result += 100;  // 101
        break;
      default: {
        result += from;  // removed
      }
    }
    from = Counter(from).next();
  }
  return result;
}

}  // namespace

int main() {
  const auto tell = [](int value) -> void {
    if (value > 200) {
      std::puts("never");  // removed
    }
    std::printf("%s %d", kName, value);
  };
  tell(sum(1, 3) + twice(1));
  return 0;
}
'''
PLACES = {1: 'text: "one"', 2: "arithmetic: ++ -> --", 3: "comparison: < -> <=", 4: "constant: 100 -> 101",
          5: "statement: result += from;", 6: 'statement: std::puts("never");', 7: "arithmetic: * -> +"}
CALLED = '''#include <cstdio>
#include <cstdlib>

namespace mutants {
unsigned acting() { return static_cast<unsigned>(std::atoi(std::getenv("ACTING"))); }
void note(unsigned number) { std::fprintf(stderr, "%u ", number); }
}  // namespace mutants
'''


def test_each_mutant_acts_when_its_number_is_called_and_tells_where_it_would_be_reached(tmp_path):
    all_of_them = mutants.mutants_of("src/a.cpp", SLEEPING)
    numbered = {number: next(mutant for mutant in all_of_them if place in mutant.told())
                for number, place in PLACES.items()}
    result = weave.woven(SLEEPING, numbered, 99)
    assert (set(result.copies), set(result.chosen), result.single) == ({2, 3, 4, 5, 6}, {1}, {7})
    sources = [tmp_path / "a.cpp", tmp_path / "called.cpp"]
    for source, text in zip(sources, (result.text, CALLED)):
        source.write_text(text)
    subprocess.run(["g++", "-std=c++20", "-I", PROJECT, *sources, "-o", tmp_path / "a"], check=True)

    def run(number):
        return subprocess.run([tmp_path / "a"], env=dict(os.environ, ACTING=str(number)), capture_output=True,
                              text=True, timeout=20, check=True)

    asleep = run(0)
    assert asleep.stdout == "one 103"
    assert {int(number) for number in asleep.stderr.split()} == {99, 2, 3, 4, 5}
    assert [run(number).stdout for number in (1, 3, 4, 5, 6)] == [
        "one# 103", "one 106", "one 104", "one 102", "one 103"]


def test_a_body_is_told_from_what_looks_like_one():
    code, _ = mutants.blanked(SLEEPING)
    bodies = [code[:one.opening].splitlines()[-1].split("(")[0].split()[-1] for one in weave.functions(code)]
    assert bodies == ["twice", "Counter", "check", "next", "sum", "main"]


def test_the_program_s_own_sources_can_be_read():
    for path in sorted((PROJECT / "src").rglob("*.cpp")):
        source = path.read_text(encoding="utf-8")
        for mutant in mutants.mutants_of(str(path.relative_to(PROJECT)), source):
            assert mutant.applied(source) != source
