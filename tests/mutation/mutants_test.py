# SPDX-License-Identifier: MIT
import pathlib
import sys
import tempfile
import unittest
import unittest.mock

sys.path.insert(0, str(pathlib.Path(__file__).parent))
sys.dont_write_bytecode = True

import mutants  # noqa: E402
import run  # noqa: E402


def changed(line):
    """What a line may become."""
    return {mutant.apply(line) for mutant in mutants.candidates("a.cpp", line)}


class OperatorsTest(unittest.TestCase):
    # Line and all it may become.
    ROWS = [
        ("return a < b;", {"return a <= b;", "return a >= b;"}),
        ("return a == b;", {"return a != b;"}),
        ("return a && b;", {"return a || b;"}),
        ("x = a - b;", {"x = a + b;"}),
        ("x = a * b;", {"x = a / b;"}),
        ("x += a;", {"x -= a;"}),
        ("++x;", {"--x;"}),
        ("return !ready;", {"return ready;"}),
        ("x = 0;", {"x = 1;"}),
        ("x = 1u;", {"x = 0u;", "x = 2u;"}),
        ("x = 25;", {"x = (25 + 1);", "x = (25 - 1);"}),
        ("x = 0x1p-53;", {"x = (0x1p-53 + 1);", "x = (0x1p-53 - 1);"}),
        ("x = 2.5e-3;", {"x = (2.5e-3 + 1);", "x = (2.5e-3 - 1);"}),
        ("x = true;", {"x = false;"}),
        ("x = std::min(a, b);", {"x = std::max(a, b);"}),
        ("if (ready) go();", {"if (!(ready)) go();"}),
        ("while (f(x)) go();", {"while (!(f(x))) go();"}),
    ]

    def test_changes_what_decides(self):
        for line, expected in self.ROWS:
            with self.subTest(line):
                self.assertEqual(changed(line), expected)

    def test_leaves_alone_what_is_no_operator(self):
        for line in ["std::vector<long> a;", "void f(Body&& body);", "const T* p = &x;", "x = -y;",
                     "// a < b", '#include "a/b.h"', 'throw Bad("a < 1");', "c = '+';",
                     "static_assert(sizeof a == 8);", "/* 1 + 2 */", "#define A 1",
                     "if (const T* p = find()) go();", "std::uint64_t x2;"]:
            with self.subTest(line):
                self.assertEqual(changed(line), set())

    def test_keeps_the_other_lines_where_they_are(self):
        text = "// 1 < 2\nint f() {\n  return a <\n         b;\n}\n"
        (first, second) = mutants.candidates("a.cpp", text)
        self.assertEqual((first.line, second.line), (3, 3))
        self.assertEqual(first.apply(text), text.replace("a <\n", "a <=\n"))

    def test_shows_the_line_before_and_after(self):
        text = "x;\n  if (a) b();\ny;\n"
        (only,) = mutants.candidates("a.cpp", text)
        self.assertEqual(only.lines(text), ("if (a) b();", "if (!(a)) b();"))


    def test_knows_a_change_again_after_a_comment(self):
        (before,) = mutants.candidates("a.cpp", "x = a + b;\n")
        (after,) = mutants.candidates("a.cpp", "// Why.\nx = a\n    + b;  // 1 + 1\n")
        (other,) = mutants.candidates("a.cpp", "x = a + c;\n")
        self.assertEqual(before.key, after.key)
        self.assertNotEqual(before.key, other.key)


class DrawTest(unittest.TestCase):
    TEXT = "".join(f"x{i} = a + {i};\n" for i in range(20))

    def test_is_the_same_for_the_same_seed(self):
        self.assertEqual(mutants.drawn("a", self.TEXT, 7), mutants.drawn("a", self.TEXT, 7))
        self.assertNotEqual(mutants.drawn("a", self.TEXT, 7), mutants.drawn("a", self.TEXT, 8))

    def test_holds_every_candidate_once(self):
        self.assertCountEqual(mutants.drawn("a", self.TEXT, 7),
                              mutants.candidates("a", self.TEXT))

    def test_comes_back_to_a_place_only_after_all_others(self):
        places = [mutant.offset for mutant in mutants.drawn("a", self.TEXT, 7)]
        first = places[:len(set(places))]
        self.assertEqual(len(set(first)), len(first))


class SharesTest(unittest.TestCase):
    def test_gives_each_source_one_and_the_rest_by_size(self):
        self.assertEqual(mutants.shares({"a": 10, "b": 30, "none": 0}, 10), {"a": 3, "b": 7})

    def test_gives_no_more_than_there_are(self):
        self.assertEqual(mutants.shares({"a": 1, "b": 2}, 100), {"a": 1, "b": 2})


class CampaignTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.state = run.State(self.folder / "state.json")
        self.files = {"foundation/a.cpp": "x = a + b;\ny = a - b;\nz = a * b;\n"}

    def choose(self, count, outcome):
        args = unittest.mock.Mock(count=count, seed=1)
        asked = []

        def attempt(mutant):
            asked.append(mutant)
            result = outcome(mutant)
            self.state.put(mutant, self.files[mutant.path], result, "", 0.0)
            return result

        return run.chosen(self.files, args, self.state, attempt), asked

    def test_replaces_what_does_not_count(self):
        counted, asked = self.choose(
            2, lambda mutant: "no code" if mutant.line == 2 else "failed")
        self.assertEqual(sorted(mutant.line for mutant in counted), [1, 3])
        self.assertGreaterEqual(len(asked), 2)

    def test_goes_on_where_it_stopped(self):
        self.choose(2, lambda mutant: "failed")
        counted, asked = self.choose(3, lambda mutant: "survived")
        self.assertEqual((len(counted), len(asked)), (3, 1))

    def test_reads_the_explained_survivors(self):
        survivors = self.folder / "survivors.md"
        survivors.write_text("foundation/a.cpp\n\n    - x = a + b;\n    + x = a - b;\n\nWhy.\n")
        self.assertEqual(run.explained(survivors),
                         {("foundation/a.cpp", "x = a + b;", "x = a - b;")})


if __name__ == "__main__":
    unittest.main()
