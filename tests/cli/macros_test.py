#!/usr/bin/env python3
"""Macros of expressions: the built-in ones and those of the user's file."""
import os
import re

from program import ProgramTest, main, zel

HEAD = """<?xml version="1.0" encoding="UTF-8" standalone="yes" ?>
<!DOCTYPE boost_serialization>
<boost_serialization signature="serialization::archive" version="18">
<macros class_id="0" tracking_level="0" version="0">
<count>{}</count><item_version>0</item_version>
"""
TAIL = "</macros>\n</boost_serialization>\n"


def macro(name, parameters, text):
    def head(number):  # as in the first entry, so that entries can be copied
        return f' class_id="{number}" tracking_level="0" version="0"'
    names = "".join(f"<item>{parameter}</item>" for parameter in parameters)
    return (f"<item{head(1)}><macro_id_>{name}</macro_id_><arg_names_{head(2)}>"
            f"<count>{len(parameters)}</count><item_version>0</item_version>{names}</arg_names_>"
            f"<expression_>{text}</expression_><description_>about {name}</description_>"
            "<category_>own</category_></item>\n")


class Macros(ProgramTest):
    def setUp(self):
        super().setUp()
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("APPDATA", "XDG_CONFIG_HOME")}
        self.environment["HOME"] = str(self.path)

    def write(self, text, folder=".config"):
        path = self.path / folder / "Corvath" / "calculator" / "macros.def"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def list(self):
        result = zel("macros", env=self.environment)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        builtin, user = result.stdout.decode().split("\n\n")
        return builtin.splitlines(), user.splitlines()

    def value(self, expression):
        result = zel("eval", expression, env=self.environment)
        self.assertEqual(result.stderr, b"")
        return result.stdout.decode().split("\n")[1]

    def test_lists_the_built_in_ones(self):
        builtin, user = self.list()
        self.assertEqual(len(builtin), 2 + 49)
        self.assertIn("$SIG_MIN_Y_SLOT(__c, __r, __r2) min(window(__c,__r,__r2))[1]",
                      [re.sub(" +", " ", line.strip()) for line in builtin])
        self.assertEqual(len(user), 1)
        self.assertTrue(user[0].endswith(".config/Corvath/calculator/macros.def: no such file"))

    def test_lists_and_calls_those_of_the_users_file(self):
        self.write(HEAD.format(3) + macro("länge", ["a", "b"], "sqrt(a^2+\n b^2)") +
                   macro("SIG_SIZE", ["x"], "0") + macro("twice", ["x"], "2*(x)") + TAIL)
        _, user = self.list()
        self.assertEqual([re.sub(" +", " ", line.strip()) for line in user[1:]], [
            "Macro Text Category Description",
            "$länge(a, b) sqrt(a^2+ b^2) own about länge",
            "$twice(x) 2*(x) own about twice",
            "Without effect, as built-in macros have their names: $SIG_SIZE"])
        self.assertEqual(self.value("$twice(1+2)"), "Real 6")
        self.assertEqual(self.value("$SIG_SIZE(xydata([0,1],[2,3]))"), "Real 2")

    def test_a_damaged_file_hides_nothing_else(self):
        path = self.write(HEAD.format(2) + macro("twice", ["x"], "2*(x)") + "<item><mac")
        result = zel("macros", env=self.environment)
        self.refused(result, f"{path}: damaged behind macro 1")
        self.assertIn("$twice(x)", result.stdout.decode())
        self.assertEqual(self.value("$twice(3)"), "Real 6")
        self.write("twice(x) = 2*x")
        self.refused(zel("macros", env=self.environment), "damaged, or no macro file")
        self.assertEqual(self.value("1+1"), "Real 2")

if __name__ == "__main__":
    main()
