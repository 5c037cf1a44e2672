#!/usr/bin/env python3
"""Tables that people have, and tables that are none, through zel solve and zel train."""
import resource

from program import INPUTS, SAMPLE, ProgramTest, designs, main, table, zel


class Table(ProgramTest):
    def solve(self, text, *arguments):
        data = text if isinstance(text, bytes) else text.encode()
        return zel("solve", SAMPLE, "--in", "-", *arguments, stdin=data)

    def test_accepts_what_spreadsheets_write(self):
        rows = designs(2)
        text = table(rows).decode()
        expected = self.solve(text).stdout
        lines = text.splitlines()
        variants = {
            "byte order mark": "\ufeff" + text,
            "CR LF": text.replace("\n", "\r\n"),
            "CR": text.replace("\n", "\r"),
            "quoted": "\n".join(",".join(f'"{cell}"' for cell in line.split(",")) for line in lines),
            "no line end at the end": text.rstrip("\n"),
            "blank lines": "\r\n\r\n" + text.replace("\n", "\r\n\r\n"),
            "rows of empty cells": text + 9 * "," + "\n" + '"",' + 8 * "," + "\n",
            "blanks around": text.replace(",", " , "),
            "blanks within quotes": lines[0] + "\n" + "\n".join(
                ",".join(f'" {cell} "' for cell in line.split(",")) for line in lines[1:]),
            "plus signs": lines[0] + "\n" + "\n".join("+" + line.replace(",", ",+")
                                                     for line in lines[1:]),
            "more columns, with one name": "\n".join(f'{line},"a, ""b""\n",,' for line in lines),
        }
        for name, variant in variants.items():
            with self.subTest(name):
                result = self.solve(variant)
                self.assertEqual(result.stdout, expected, result.stderr)
        tiny = text.replace(lines[1].split(",")[0], "1e-999")  # less than all doubles is zero
        zero = text.replace(lines[1].split(",")[0], "0")
        self.assertEqual(self.solve(tiny, "--extrapolate").stdout,
                         self.solve(zero, "--extrapolate").stdout)

    def test_long_tables_are_the_same_however_they_are_read(self):
        """Plain lines are read apart from those in which bytes have a meaning."""
        text = table(designs(10000)).decode()
        header, *lines = text.splitlines()
        expected = self.solve(text).stdout
        self.assertEqual(expected.count(b"\n"), 10001)
        quoted = ['"' + line.replace(",", '","') + '"' for line in lines]
        comment = "# " + "a comment, with \" and 'and more\n"
        mixed = "".join((quoted if i // 2500 % 2 else lines)[i] + "\n" + "\r\n" * (i % 700 == 3)
                        + comment * (i % 2999 == 5) for i in range(len(lines)))
        for name, variant in {"CR LF": text.replace("\n", "\r\n"), "no end": text.rstrip("\n"),
                              "quoted": "\n".join([header] + quoted),
                              "mixed": header + "\n" + mixed,
                              "semicolons": text.replace(",", ";"),
                              "decimal commas": text.replace(",", ";").replace(".", ",")}.items():
            for threads in "1", "4":
                with self.subTest(name, threads=threads):
                    result = zel("solve", SAMPLE, "--in", "-", stdin=variant.encode(),
                                 env={"ZELSOLVER_NUM_THREADS": threads})
                    self.assertEqual(result.stdout, expected, result.stderr)
        cells = lines[7000].split(",")
        lines[7000] = ",".join(cells[:9] + ["no"])
        lines[9000] = ",".join(cells[:9] + ["1e9"])
        lines[9001] = "1"
        for threads in "1", "4":
            result = zel("solve", SAMPLE, "--in", "-", stdin="\n".join([header] + lines).encode(),
                         env={"ZELSOLVER_NUM_THREADS": threads})
            self.refused(result, 'standard input: row 7002, column "area_10"')

    def test_odd_bytes_are_shown_without_harm(self):
        header = ",".join(INPUTS)
        odd = ",".join(4 * ["12"] + ["\x1b[2J\u00e9" + 1000 * "x"] + 5 * ["12"])
        self.refused(self.solve(f"{header}\n{odd}\n"), "zel: standard input: ", "row 2", '"area_5"',
                     '"?[2J\u00e9xxx', 'xxx..."')
        self.refused(self.solve(f"{header}\n12,\0"), "row 2, cell 2", "zero byte")

    def test_what_is_no_table_takes_no_memory(self):
        def limited(text):
            data = self.path / "data"
            data.write_bytes(text)
            space = 400 << 20  # of address; the program itself takes a part of it
            return zel("solve", SAMPLE, "--in", str(data), preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_AS, (space, space)))

        header = ",".join(INPUTS).encode()
        line = b",".join([b"12"] * 10)
        self.refused(limited(header + b"\n" + (20 << 20) * b","), "row 2", "more than 1048576 cells")
        self.refused(limited((20 << 20) * b"x"), "row 1, cell 1", "longer than 1048576 bytes")
        self.refused(limited(header + b'\n"' + (2 << 20) * b"\n"), "row 2, cell 1", "not closed?")
        self.refused(limited(bytes(range(256)) * 1000), "row 1, cell 1")
        # A million columns are many, but a table.
        wide = header + 10**6 * b",c" + b"\n" + line + 10**6 * b",1" + b"\n"
        self.assertEqual(limited(wide).stdout.count(b"\n"), 2)

if __name__ == "__main__":
    main()
