"""zel report in Chromium: it computes what the library does, and obeys mouse and keyboard.

Runs as   report_test.py ZEL EXAMPLES PROJECTS
"""
import base64
import csv
import html
import io
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

import numpy as np

try:
    from selenium import webdriver
    from selenium.webdriver import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    print("no selenium: the page is not tested")
    sys.exit(0)

ZEL, EXAMPLES, PROJECTS = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
TRUSS, HOSTILE = EXAMPLES / "zel_tenbar.vrdb", PROJECTS / "hostile.vrdb"
STUDIES = [TRUSS, EXAMPLES / "zel_tenbar_random.vrdb", HOSTILE, PROJECTS / "single.vrdb"]


def zel(*arguments, stdin=b""):
    result = subprocess.run([str(ZEL), *map(str, arguments)], input=stdin, capture_output=True,
                            timeout=120)
    assert result.returncode == 0, result.stderr
    return result.stdout


def library(project, names, x):
    text = io.StringIO(newline="")
    csv.writer(text).writerows([names, *([repr(float(v)) for v in row] for row in x)])
    rows = list(csv.reader(io.StringIO(zel("solve", project, "--in", "-", "--criteria", "--quiet",
                                           stdin=text.getvalue().encode()).decode(), newline="")))
    return rows[0], np.array(rows[1:], dtype=float)


def contrast(one, other):
    """WCAG 2.1: ratio of the relative luminances."""
    def luminance(text):
        channels = [int(text[i:i + 2], 16) / 255 for i in (1, 3, 5)]
        linear = [c / 12.92 if c <= 0.03928 else ((c + 0.055) / 1.055) ** 2.4 for c in channels]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    high, low = sorted((luminance(one), luminance(other)), reverse=True)
    return (high + 0.05) / (low + 0.05)


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--window-size=1280,1000"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        try:
            cls.browser = webdriver.Chrome(
                service=webdriver.ChromeService("/usr/bin/chromedriver")
                if hasattr(webdriver, "ChromeService")
                else webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)
        except Exception as error:
            raise unittest.SkipTest(f"no Chromium: {error}")
        cls.folder = tempfile.TemporaryDirectory()
        cls.pages = {}
        for project in STUDIES:
            cls.pages[project] = pathlib.Path(cls.folder.name, project.stem + ".html")
            analyses = {"zel_tenbar_random": ["--with", "sensitivity,propagate,optimize",
                                              "--minimize", "mass"],
                        "zel_tenbar": ["--with", "optimize", "--minimize", "mass"]}.get(project.stem, [])
            zel("report", project, "-o", cls.pages[project], "--quiet", *analyses)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def open(self, project):
        self.browser.get(self.pages[project].as_uri())
        self.addCleanup(lambda: self.assertEqual(self.browser.get_log("browser"), []))

    def run_script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def answers(self):
        return {row.find_element(By.TAG_NAME, "th").text: row.find_element(By.TAG_NAME, "td").text
                for row in self.browser.find_elements(By.CSS_SELECTOR, "#answers tbody tr")}

    def test_page_predicts_as_the_library(self):
        for project in STUDIES:
            self.open(project)
            models = json.loads(zel("export", project, "--quiet"))
            low, high = ([entry[key] for entry in models["inputs"]] for key in ("lower", "upper"))
            x = low + np.random.default_rng(2).random((1000, len(low))) * np.subtract(high, low)
            header, expected = library(project, [entry["name"] for entry in models["inputs"]], x)
            actual = np.array(self.run_script("""
                const models = JSON.parse(document.getElementById('data').textContent).models;
                const study = makeStudy(models);
                return arguments[0].map((x) => {
                  const y = study.predict(x);
                  return [...y, ...study.criteria(x, y)].map((v) => Number.isNaN(v) ? 'nan' : v);
                });""", x.tolist()), dtype=float)
            names = [e["name"] for e in models["responses"]] + [e["name"] for e in models["criteria"]]
            for k, name in enumerate(names):
                values = expected[:, header.index(name)]
                self.assertEqual(np.isnan(values).tolist(), np.isnan(actual[:, k]).tolist(), name)
                if not np.isnan(values).all():
                    self.assertLessEqual(np.nanmax(np.abs(values - actual[:, k])),
                                         1e-9 * max(np.ptp(values), 1e-12), name)
        self.open(STUDIES[1])
        designs, responses = self.run_script("""
            const data = JSON.parse(document.getElementById('data').textContent);
            return [data.designs, data.models.responses];""")
        for k, response in enumerate(responses):  # the definition of the CoP, by what is drawn
            measured, predicted = np.array([designs["measured"][k], designs["predicted"][k]])
            squares = np.sum((measured - predicted) ** 2) / np.sum((measured - measured.mean()) ** 2)
            self.assertAlmostEqual(response["cop"], 1 - squares, delta=1e-9, msg=response["name"])

    def test_sliders_answer_to_keys_and_to_both_decimal_marks(self):
        self.open(TRUSS)
        point = [12.0] * 10
        sliders = self.browser.find_elements(By.CSS_SELECTOR, "#sliders input[type=range]")
        fields = self.browser.find_elements(By.CSS_SELECTOR, "#sliders input[type=text]")
        sliders[3].send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        point[3] += 2 * 0.01 * (24.933333333333334 - 5.066666666666667)
        for j, text in ((0, "7,5"), (1, "8.25"), (9, "-")):
            fields[j].clear()
            fields[j].send_keys(text)
        point[:2] = [7.5, 8.25]
        header, expected = library(TRUSS, [f"area_{i}" for i in range(1, 11)], [point])
        answers = self.answers()
        for name, value in zip(header, expected[0]):
            self.assertAlmostEqual(float(answers[name]), value, delta=1e-4 * abs(value), msg=name)
        self.assertEqual(fields[9].get_attribute("aria-invalid"), "true")
        violated = [e.text for e in self.browser.find_elements(By.CSS_SELECTOR, "#answers td.bad")]
        self.assertEqual(any("violated" in text for text in violated),
                         expected[0][header.index("displacement_limit")] < 0.0)
        fields[0].clear()
        fields[0].send_keys("99")
        self.assertIn("Outside the range of the designs: area_1",
                      self.browser.find_element(By.ID, "answers").text)

    def test_brushing_chooses_designs_by_mouse_and_by_number(self):
        self.open(TRUSS)
        areas = self.run_script("return JSON.parse(document.getElementById('data').textContent)"
                                ".designs.inputs[0]")
        axis = self.browser.find_element(By.CSS_SELECTOR, "#parallel .axis .overlay")  # the first
        self.run_script("arguments[0].scrollIntoView({block: 'center'})", axis)
        x, top, height = self.run_script("const box = arguments[0].getBoundingClientRect();"
                                         "return [box.x + box.width / 2, box.y, box.height]", axis)

        def mouse(*ys):
            actions = ActionChains(self.browser)
            pointer = actions.w3c_actions.pointer_action
            pointer.move_to_location(round(x), round(top + ys[0] * height)).pointer_down()
            for y in ys[1:]:
                pointer.move_to_location(round(x), round(top + y * height))
            pointer.pointer_up()
            actions.perform()

        mouse(0.5, 0.8, 1.1)
        chosen = self.browser.find_element(By.ID, "chosen")
        middle = 0.5 * (min(areas) + max(areas))
        expected = sum(area <= middle for area in areas)
        self.assertAlmostEqual(int(chosen.text.split()[0]), expected, delta=2)
        self.assertLess(expected, len(areas))
        mouse(0.2)
        self.assertEqual(chosen.text, "150 of 150 designs chosen")
        self.browser.find_element(By.CSS_SELECTOR, "summary").send_keys(Keys.ENTER)
        least = self.browser.find_element(By.CSS_SELECTOR, "#ranges input")
        least.send_keys("20,5", Keys.TAB)
        self.assertEqual(chosen.text,
                         f"{sum(area >= 20.5 for area in areas)} of 150 designs chosen")

    def test_numbers_are_read_as_english_and_german_write_them(self):
        self.open(TRUSS)
        cases = {"1.5": 1.5, "1,5": 1.5, " -,5e1 ": -5.0, "1,500": 1.5, "1.234,5": 1234.5,
                 "1,234.5": 1234.5, "1.234.567": 1234567.0, "1 234,5": 1234.5, "1'234'567": 1234567.0,
                 "\u22123.": -3.0, "12.34,5": None, "1,2,3": None, "1.234,5.6": None, "": None,
                 ".": None, "1e": None, "0x10": None, "Infinity": None}
        read = self.run_script("return arguments[0].map((t) => { const v = parseNumber(t);"
                               "return Number.isNaN(v) ? null : v; })", list(cases))
        self.assertEqual(dict(zip(cases, read)), cases)
        field = self.browser.find_element(By.CSS_SELECTOR, "#sliders input[type=text]")
        field.send_keys("x")
        self.assertEqual(field.get_attribute("aria-invalid"), "true")
        error = self.browser.find_element(By.ID, field.get_attribute("aria-describedby").split()[1])
        self.assertEqual((error.text, error.get_attribute("role")),
                         ("No number; area_1 stays 12", "alert"))

    def test_discrete_inputs_offer_their_states_and_show_words(self):
        words, plies, x = ["brass", "<b>steel</b>", "Öl"], [1, 2, 8], [0.0, 1.0, 2.0, 3.0]
        rows = [["kind", "plies", "x", "y"]] + [
            [w, p, v, v * v + 10 * words.index(w) + p] for w in words for p in plies for v in x]
        text = io.StringIO(newline="")
        csv.writer(text).writerows(rows)
        page = pathlib.Path(self.folder.name, 'a<b> & "words".html')
        zel("train", "-", "--inputs", "kind,plies,x", "--responses", "y", "--discrete", "plies",
            "--budget", "1", "--quiet", "-o", page.with_suffix(".vrdb"), "--report", page,
            stdin=text.getvalue().encode())
        self.browser.get(page.as_uri())
        self.assertIn(f"<title>{html.escape(page.stem)}</title>", page.read_text())
        offered = [[option.text for option in select.find_elements(By.TAG_NAME, "option")]
                   for select in self.browser.find_elements(By.CSS_SELECTOR, "#sliders select")]
        self.assertEqual(offered, [sorted(words), ["1", "2", "8"]])
        slider = self.browser.find_element(By.CSS_SELECTOR, "#sliders input[type=range]")
        slider.send_keys(Keys.HOME, Keys.ARROW_RIGHT)
        self.assertEqual(slider.get_attribute("aria-valuetext"), sorted(words)[1])
        time.sleep(0.5)
        for chart in ("#slices", "#parallel", "#scatter"):
            ticks = [e.text for e in self.browser.find_elements(By.CSS_SELECTOR, chart + " .tick")]
            self.assertIn("brass", ticks, chart)
        self.assertEqual(self.browser.get_log("browser"), [])

    def test_thin_and_hostile_projects_open(self):
        text = self.pages[TRUSS].read_text()
        begin = text.index('id="data">') + len('id="data">')
        end = text.index("</script>", begin)
        for case in ("</script><b>x</b><img src=x onerror=alert(1)>", "\u202eabc\u2028\u2066\0",
                     "A" * 10000, "\U0001f525" * 100, "no designs", "two designs", "nothing known"):
            data = json.loads(text[begin:end])
            models, designs = data["models"], data["designs"]
            columns = [column for key in ("inputs", "measured", "predicted") for column in designs[key]]
            if case.endswith(" designs"):
                count = {"no designs": 0, "two designs": 2}[case]
                for column in [designs["ids"], *columns]:
                    del column[count:]
                models["criteria"] = data["competitors"] = []
            elif case == "nothing known":
                for column in columns:
                    column[:] = [None] * len(column)
                for response in models["responses"]:
                    response.update(cop=None, single_cops=[None] * 10, error=None)
                for entry in models["inputs"]:
                    entry.update(lower=None, upper=None, reference=None)
            else:
                for entry in models["inputs"] + models["responses"] + models["criteria"]:
                    entry.update(name=case, unit=case)
                models["inputs"][0]["states"] = [0, 1]
                data.update(words=[[case, case]], notes=[case])
                models["project"]["name"] = case
            page = pathlib.Path(self.folder.name, "edited.html")
            page.write_text(text[:begin] + json.dumps(data).replace("<", "\\u003c") + text[end:])
            start = time.monotonic()
            self.browser.get(page.as_uri())
            self.assertLess(time.monotonic() - start, 20.0, case[:20])
            self.run_script("window.dispatchEvent(new Event('beforeprint'))")  # draws all at once
            self.assertEqual(self.browser.get_log("browser"), [], case[:20])
            self.assertEqual(self.run_script("""
                return [document.querySelectorAll('main b, main img').length,
                        [...document.querySelectorAll('svg *')].filter((e) => [...e.attributes]
                          .some((a) => /NaN|Infinity/.test(a.value))).length,
                        document.documentElement.scrollWidth > window.innerWidth];"""),
                             [0, 0, False], case[:20])

    def test_paper_shows_all_charts_whole(self):
        self.open(TRUSS)
        pdf = base64.b64decode(self.browser.execute_cdp_cmd(
            "Page.printToPDF", {"preferCSSPageSize": True})["data"])
        self.assertIn(len(re.findall(rb"/Type /Page\b", pdf)), range(5, 10))
        self.run_script("window.dispatchEvent(new Event('beforeprint'))")
        command = self.browser.execute_cdp_cmd
        self.addCleanup(command, "Emulation.setEmulatedMedia", {"media": ""})
        self.addCleanup(command, "Emulation.clearDeviceMetricsOverride", {})
        command("Emulation.setEmulatedMedia", {"media": "print"})
        command("Emulation.setDeviceMetricsOverride", {
            "width": 700, "height": 1000, "deviceScaleFactor": 1, "mobile": False})
        cut = self.run_script("""
            return [...document.querySelectorAll('figure, table')].filter((e) => e.clientWidth > 0 &&
              e.getBoundingClientRect().right > window.innerWidth).map((e) => e.outerHTML.slice(0, 99));""")
        hidden = self.run_script("""
            return [...document.querySelectorAll('figure')].filter((e) => e.clientHeight < 50).length;""")
        self.assertEqual((cut, hidden), ([], 0))
        self.assertFalse(any(e.is_displayed() for e in self.browser.find_elements(
            By.CSS_SELECTOR, "button, input[type=range], nav")))

    def test_analyses_stand_in_the_page(self):
        self.open(STUDIES[1])
        shown = {}
        for rows in self.browser.find_elements(By.CSS_SELECTOR, "#analyses table"):
            for row in rows.find_elements(By.CSS_SELECTOR, "tbody tr"):
                cells = [cell.text for cell in row.find_elements(By.XPATH, "./*")]
                shown.setdefault(cells[0], []).append(cells[1:])
        effects = json.loads(zel("sensitivity", STUDIES[1], "--json"))["quantities"]["mass"]
        scatter = json.loads(zel("propagate", STUDIES[1], "--json"))
        self.assertAlmostEqual(float(shown["mass"][0][-1]), effects["total"]["area_7"], delta=0.01)
        self.assertAlmostEqual(float(shown["mass"][1][-1]), effects["first"]["area_7"], delta=0.01)
        mean = scatter["quantities"]["mass"]["mean"]
        self.assertAlmostEqual(float(shown["mass"][2][0]), mean, delta=1e-3 * mean)
        self.assertAlmostEqual(float(shown["stress_limit"][3][0]),
                               scatter["limits"]["stress_limit"]["probability"], delta=1e-4)

    def test_sliders_move_to_an_optimum(self):
        self.open(TRUSS)
        self.browser.find_element(By.CSS_SELECTOR, "#analyses button").click()
        found = json.loads(zel("optimize", TRUSS, "--minimize", "mass", "--json"))
        answers = self.answers()
        text = self.browser.find_element(By.TAG_NAME, "pre").text
        least = float(re.search(r"Least mass = (\S+)", text)[1])
        for name, value in found["inputs"].items():
            self.assertAlmostEqual(float(re.search(rf"\n *{name} +(\S+)", text)[1]), value,
                                   delta=1e-4 * value, msg=name)
        self.assertAlmostEqual(float(answers["mass"]), least, delta=1e-4 * least)
        self.assertAlmostEqual(float(answers["displacement"]), 2.0, delta=1e-3)  # the active limit
        self.assertEqual(found["status"], "optimal")

    def test_names_stay_text_and_nothing_is_asked_for(self):
        self.open(HOSTILE)
        text = self.pages[HOSTILE].read_text()
        self.assertEqual(text.count("</script>"), 3)
        self.assertEqual(re.findall(r"\b(?:src|href|action)\s*=\s*[\"']?(?!#)[^\"'#\s]+", text), [])
        self.assertIn("default-src 'none'", text)
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "main b"), [])
        rows = [e.text for e in self.browser.find_elements(By.CSS_SELECTOR, "#cops tbody th")]
        self.assertIn("<b>3</b>&amp;", rows)
        self.assertLess(self.pages[TRUSS].stat().st_size, 1.5e6)

    def test_everything_has_a_label_and_enough_contrast(self):
        self.open(TRUSS)
        time.sleep(0.5)
        nameless = self.run_script("""
            return [...document.querySelectorAll('input, select, button, svg, [tabindex], nav')]
              .filter((node) => !(node.labels && node.labels.length) && !node.ariaLabel &&
                      !node.getAttribute('aria-labelledby') && !(node.tagName === 'BUTTON' && node.textContent))
              .map((node) => node.outerHTML);""")
        self.assertEqual(nameless, [])
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            colors = self.run_script("return Object.fromEntries(arguments[0].map((n) => [n, color(n)]))",
                                     ["back", "panel", "text", "soft", "accent", "bad", "good"])
            self.assertEqual(colors["back"] == "#ffffff", scheme == "light")
            for name in ("text", "soft", "accent", "bad", "good"):
                for ground in ("back", "panel"):
                    self.assertGreaterEqual(contrast(colors[name], colors[ground]), 4.5,
                                            (scheme, name, ground))
        self.run_script("window.dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(self.run_script("return color('back')"), "#ffffff")
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
