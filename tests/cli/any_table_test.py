#!/usr/bin/env python3
"""Tables as spreadsheets, devices and people write them, through zel train and zel solve."""
import datetime
import json
import random

from program import ProgramTest, main, zel

WORDS = ["brass", "\u00d6l", "steel"]  # in the order of their bytes


def rows(n=24):
    source = random.Random(3)
    return [(source.uniform(0, 3), source.uniform(1, 9), WORDS[i * 5 % 3]) for i in range(n)]


def plane(x, force, word):
    return 2 * x - 0.5 * force + 3 * WORDS.index(word)


def text(separator=",", decimal=".", n=24, before="", units="", between=""):
    """Columns x, load [kN], kind and y, the plane."""
    lines = [before + separator.join(["x", "load [kN]", "kind", "y"]), *([units] if units else [])]
    for i, row in enumerate(rows(n)):
        if i == 5 and between:
            lines.append(between)
        cells = [f"{v:.17g}" if isinstance(v, float) else v for v in (*row, plane(*row))]
        lines.append(separator.join(c.replace(".", decimal) for c in cells))
    return "\n".join(lines) + "\n"


class AnyTable(ProgramTest):
    def write(self, data, name="t.csv"):
        path = self.path / name
        path.write_bytes(data if isinstance(data, bytes) else data.encode())
        return str(path)

    def train(self, data, *arguments, inputs="all", responses="y"):
        result = zel("train", self.write(data), "--inputs", inputs, "--responses", responses, "-o",
                     str(self.path / "t.vrdb"), *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result

    def refused_training(self, data, *texts, inputs="x"):
        result = zel("train", self.write(data), "--inputs", inputs, "--responses", "y", "-o",
                     str(self.path / "none.vrdb"))
        self.assertEqual(result.returncode, 1, result)
        for part in texts:
            self.assertIn(part, result.stderr.decode().splitlines()[-1])
        self.assertFalse((self.path / "none.vrdb").exists())

    def solve(self, data, *arguments):
        result = zel("solve", str(self.path / "t.vrdb"), "--in", "-", "--extrapolate", *arguments,
                     stdin=data if isinstance(data, bytes) else data.encode())
        return self.records(result), result.stderr.decode()

    def test_reads_tables_as_what_they_are(self):
        self.train(text())
        plain, note = self.solve(text())
        self.assertEqual(note, "")
        for answer, row in zip(plain, rows()):
            self.assertAlmostEqual(float(answer["y"]), plane(*row), delta=1e-6)
        semicolons = "semicolons between the cells and decimal commas"
        for data, notes in [
            (text(";", ","), [semicolons]),
            (text("\t", ","), ["tabs between the cells and decimal commas"]),
            (text(";"), ["semicolons between the cells and decimal points"]),
            (text("|", ","), ["upright bars between the cells and decimal commas"]),
            ("sep=;\n" + text(";", ",").replace("\n", ";\n"), [semicolons]),
            (text().encode("cp1252"), ["Windows-1252"]),
            (text(";", ",").encode("utf-16"), ["UTF-16", semicolons]),
            (b"\xfe\xff" + text().encode("utf-16-be"), ["UTF-16"]),
            (text("\t", ",").replace("\n", "\r\n").encode("utf-16-le"), ["UTF-16", "tabs"]),
            (text().encode("utf-16-be"), ["UTF-16"]),
            (text(units="mm,[kN],,N/mm\u00b2"), ["row 2 holds units"]),
            (text(before='# it\'s 5" wide\n\n  # 1,2\n', between="# again"), ["3 comment lines"]),
            (text(before="# first\n# "), ["row 2 is the header"]),
        ]:
            with self.subTest(data[:60]):
                answers, note = self.solve(data)
                self.assertEqual(answers, plain)
                self.assertEqual(note.count("\n"), 1)
                for part in notes:
                    self.assertIn(part, note)
                self.assertEqual(self.solve(data, "--quiet"), (plain, ""))
                project = (self.path / "t.vrdb").stat().st_mtime_ns
                self.assertIn(notes[0], self.train(data).stderr.decode())
                self.assertNotEqual((self.path / "t.vrdb").stat().st_mtime_ns, project)
                self.assertEqual(self.solve(text())[0], plain)

    def test_pieces_of_a_long_table_are_joined(self):
        self.train("a,y\n" + "".join(f"{i},{3 * i}\n" for i in range(9)), inputs="a")
        for filler in ("\u00e4", "\u20ac", "\U0001f600"):  # of 2, 3 and 4 bytes, at all offsets
            long = "a,note\n" + "".join(f"{i % 9},{filler * (i % 7 + 30)}\n" for i in range(4000))
            for encoding in ("utf-8", "utf-16"):
                answers, _ = self.solve(long.encode(encoding))
                self.assertEqual([round(float(row["y"]), 6) for row in answers],
                                 [3.0 * (i % 9) for i in range(4000)])
        answers, _ = self.solve("a\n# of 4\n3\n")  # a comment is no row of the lone column
        self.assertEqual([round(float(row["y"]), 6) for row in answers], [9.0])
        numbers = "x\ty\n" + "".join(f"{i % 9},5\t{i % 9 + 1},5\n" for i in range(20000))
        self.train(numbers.replace("\n", "\n# no, 1\n", 1), inputs="x")

    def test_commented_header(self):
        self.train("# run 7\n# x y\n#x\ty\n" + "".join(f"{i}\t{5 - i}\n" for i in range(9)),
                   inputs="x")
        # A row of units has nothing but units.
        result = self.train("x,y\n1,mm\n" + "".join(f"{i},{5 - i}\n" for i in range(9)), inputs="x")
        self.assertIn(b'row 2, column "y": "mm" is not a number', result.stderr)
        # Below a header a line of as many cells is a row, whatever it begins with.
        result = self.train("id,x,y\n" + "".join(f"#{i},{i},{5 - i}\n" for i in range(9)),
                            inputs="x")
        self.assertIn(b"        9  ", result.stdout)

    def test_refuses_what_is_not_certain(self):
        for data, parts in {
            b"x,y,\xc3\xa4\n1,2,3\n2,\xff\n": ["row 3, cell 2", "0xff", "UTF-8"],
            b"x,\x81\n1,2\n": ["row 1, cell 2", "0x81", "Windows-1252"],
            "x,y\n1,2\n".encode("utf-16")[:-1]: ["row 2", "UTF-16"],
            "x,y\n1,2\n".encode("utf-16-le") + b"\x01\xd8": ["UTF-16", "damaged"],
        }.items():
            with self.subTest(data):
                self.refused_training(data, *parts)

    def test_rows_that_lack_an_input(self):
        base = [[i, i * i % 7, 3 * i] for i in range(12)]
        complete = "".join(f"{x},{z},{y}\n" for x, z, y in base)
        self.train("x,z,y\n" + complete, inputs="x,z")
        expected = self.solve("x,z,y\n" + complete)[0]
        for missing in ("", "NA", "n/a", "NaN", "null", "#NV", "?", "-", ".", '" "'):
            data = f"x,z,y\n{complete}5,{missing},99\n{missing},5,99\n"
            with self.subTest(missing):
                self.refused_training(data, "row 14", '"z"', "--skip-incomplete", inputs="x,z")
                result = self.train(data, "--skip-incomplete", inputs="x,z")
                self.assertIn(b'row 14, column "z"', result.stderr)
                self.assertIn(b"2 of 14 rows left out", result.stderr)
                self.assertEqual(self.solve("x,z,y\n" + complete)[0], expected)

    def test_columns_by_pattern(self):
        header = ["id", "x_1", "x_2", "x*", "all", "y1", "y2", ""]
        source = random.Random(1)
        data = ",".join(header) + "\n" + "".join(
            ",".join(f"{source.random():.6f}" for _ in header) + "\n" for _ in range(12))
        for arguments, inputs, responses in [
            (["--inputs", "x_*", "--responses", "y*"], ["x_1", "x_2"], ["y1", "y2"]),
            (["--inputs", "x*", "--responses", "y?"], ["x*"], ["y1", "y2"]),
            (["--inputs", "x_?,all", "--responses", "y1"], ["x_1", "x_2", "all"], ["y1"]),
            (["--inputs", "y2,x_1", "--responses", "y*"], ["y2", "x_1"], ["y1"]),
            (["--inputs", "*", "--ignore", "i?,all", "--responses", "y1"],
             ["x_1", "x_2", "x*", "y2"], ["y1"]),
        ]:
            result = zel("train", self.write(data), *arguments, "--json", "-o",
                         str(self.path / "p.vrdb"))
            told = json.loads(result.stdout)
            self.assertEqual([column["name"] for column in told["inputs"]], inputs)
            self.assertEqual([column["name"] for column in told["responses"]], responses)
        every = data.replace("all", "every", 1)
        told = json.loads(self.train(every, "--json", responses="y*").stdout)
        self.assertEqual([column["name"] for column in told["inputs"]],
                         ["id", "x_1", "x_2", "x*", "every"])

    def test_words_are_known_everywhere(self):
        result = self.train(text(), "--criterion", 'good: #if kind == "steel" #then y #else -1',
                            "--criterion", 'other: #if "\u00d6l" != kind #then 1 #else 2')
        # Codes stand in the order of the bytes, where o with dots comes last.
        codes = {word: code for code, word in enumerate(sorted(WORDS, key=str.encode))}
        self.assertIn("0 brass, 1 steel, 2 \u00d6l", result.stderr.decode())
        answers, _ = self.solve(text(), "--criteria")
        coded = "\n".join(",".join(str(codes.get(cell, cell)) for cell in line.split(","))
                          for line in text().splitlines())
        self.assertEqual(self.solve(coded, "--criteria")[0], answers)
        for answer, (_, _, word) in zip(answers, rows()):
            self.assertEqual(answer["good"], answer["y"] if word == "steel" else "-1")
            self.assertEqual(answer["other"], "2" if word == "\u00d6l" else "1")
        self.refused(zel("solve", str(self.path / "t.vrdb"), "--in", "-",
                         stdin=text().replace("brass", "bras", 1).encode()),
                     "row 2", '"kind"', '"bras"', 'did you mean "brass"?')
        sample = zel("sample", "--scheme", "sobol", "--n", "8", "--from",
                     str(self.path / "t.vrdb")).stdout.decode()
        self.assertEqual({line.split(",")[2] for line in sample.splitlines()[1:]}, set(WORDS))
        self.assertEqual(len(self.solve(sample)[0]), 8)
        best = zel("optimize", str(self.path / "t.vrdb"), "--minimize", "y", "--csv", "-", "--fix",
                   "kind=brass").stdout.decode()
        self.assertEqual(best.splitlines()[1].split(",")[2], "brass")
        best = zel("optimize", str(self.path / "t.vrdb"), "--minimize", "y", "--json").stdout
        self.assertIn(json.loads(best)["inputs"]["kind"], WORDS)
        self.assertIn(b"do not vary: kind = steel",
                      zel("sensitivity", str(self.path / "t.vrdb"), "--fix", "kind=steel").stdout)
        for command in (["sensitivity"], ["optimize", "--minimize", "y"]):
            self.refused(zel(command[0], str(self.path / "t.vrdb"), *command[1:], "--fix",
                             "kind=0.5"), '"kind=0.5"', '"brass", "steel"', "nothing else")
        info = json.loads(zel("info", str(self.path / "t.vrdb"), "--json").stdout)
        self.assertEqual(info["inputs"][2]["words"], sorted(WORDS, key=str.encode))

    def test_criteria_use_columns_of_any_name(self):
        result = self.train(text(units="mm,[kN],,-"), "--criterion", "a: 2*`load [kN]` + x",
                            "--criterion", "b: x <= load_kN - `x`")
        self.assertIn(b'"load [kN]" is named load_kN', result.stderr)
        for title in ("load [kN]", "load_kN"):
            answers, _ = self.solve(text().replace("load [kN]", title), "--criteria")
            for answer, (x, load, _) in zip(answers, rows()):
                self.assertAlmostEqual(float(answer["a"]), 2 * load + x, delta=1e-12)
                self.assertAlmostEqual(float(answer["b"]), load - 2 * x, delta=1e-12)
        info = json.loads(zel("info", str(self.path / "t.vrdb"), "--json").stdout)
        self.assertEqual((info["inputs"][1]["title"], info["inputs"][1]["unit"]),
                         ("load [kN]", "kN"))
        odd = text().replace("load [kN]", "e", 1)
        self.train(odd, "--criterion", "c: `e` + 1")
        self.assertAlmostEqual(float(self.solve(odd, "--criteria")[0][0]["c"]), rows()[0][1] + 1,
                               delta=1e-12)

    def test_dates_are_days(self):
        origin = datetime.datetime(1970, 1, 1)
        days = [datetime.datetime(2023 + i % 3, 1 + i * 5 % 12, 1 + i * 7 % 28, i, 30)
                for i in range(20)]
        table = {form: "day,y\n" + "".join(
            f"{day.strftime(form)},{(day - origin) / datetime.timedelta(days=1) / 7:.17g}\n"
            for day in days) for form in ("%Y-%m-%dT%H:%M:%S", "%d.%m.%Y %H:%M", "%d/%m/%Y %H:%M",
                                          "%m/%d/%Y %H:%M", "%Y%m%d %H:%MZ", "%Y/%m/%d %H:%M")}
        for form, data in table.items():
            with self.subTest(form):
                result = self.train(data, "--dates", "day")
                self.assertIn(b"days since 1970-01-01", result.stderr)
                if form[2] == "/" and form[1] != "Y":
                    order = "day/month/year" if form[1] == "d" else "month/day/year"
                    self.assertIn(order.encode(), result.stderr)
                answers, _ = self.solve(data)
                for answer, day in zip(answers, days):
                    self.assertAlmostEqual(float(answer["y"]),
                                           (day - origin).total_seconds() / 86400 / 7, delta=1e-6)

    def test_json_tells_everything(self):
        data = text()
        told = json.loads(self.train(data, "--json").stdout)
        response, = told["responses"]
        values = [plane(*row) for row in rows()]
        mean = sum(values) / len(values)
        squares = sum((value - mean) ** 2 for value in values)
        candidates = response["candidates"]
        self.assertGreater(len(candidates), 10)
        for candidate in candidates:  # the definition of the CoP, from the table alone
            self.assertAlmostEqual(candidate["cop"],
                                   1 - len(values) * candidate["rmse"] ** 2 / squares, delta=1e-9)
        self.assertEqual([c["cop"] for c in candidates],
                         sorted((c["cop"] for c in candidates), reverse=True))
        chosen, = [c for c in candidates if c["chosen"]]
        self.assertEqual(chosen["inputs"], [i["name"] for i in response["inputs"]])
        self.assertIn(chosen["family"], response["model"])
        self.assertTrue(any("words" in note for note in told["notes"]))
        project = str(self.path / "t.vrdb")
        info = json.loads(zel("info", project, "--json", "--candidates").stdout)
        self.assertEqual(info["responses"][0]["candidates"], candidates)
        self.assertEqual(info["responses"][0]["cop"], response["cop"])
        listed = zel("info", project, "--candidates").stdout.decode()
        lines = listed[listed.index("Candidates for y"):].splitlines()
        self.assertEqual(len([line for line in lines if line.startswith("  ")]),
                         len(candidates) + 1)
        self.assertEqual(len([line for line in lines if line.startswith("  *")]), 1)


if __name__ == "__main__":
    main()
