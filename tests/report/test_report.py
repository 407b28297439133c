"""Opens pages of drives in a real browser, and uses them."""
import base64
import os
import pathlib
import re
import subprocess

import pytest
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

import drives
from drives import SECOND, drive, fix, message, sentence

MOST_BYTES = 2_000_000
MOST_MEMORY = 64_000_000


def expect_sound(screen, page):
    """The page is valid, of bounded size, says nothing on the console and asks for nothing."""
    assert page.stat().st_size < MOST_BYTES
    tidy = subprocess.run(["tidy", "-q", "-e", "--drop-empty-elements", "no", page],
                          capture_output=True, text=True, check=False)
    assert tidy.stderr == "" and tidy.returncode == 0
    screen.open(page)
    console, requests = screen.logs()
    assert console == []
    assert requests == [page.resolve().as_uri()]


def values(screen):
    """What stands beside the pictures."""
    return screen.run("""
        const values = {time: document.getElementById('moment-time').textContent,
                        line: document.getElementById('moment-line').textContent};
        for (const pair of document.querySelectorAll('#moment-values div')) {
            values[pair.querySelector('dt').textContent] = pair.querySelector('dd').textContent;
        }
        return values;""")


def press(screen, *keys):
    """Keys without a pause between them."""
    actions = ActionChains(screen.driver, duration=0)
    for key in keys:
        actions.send_keys(key)
    actions.perform()


def time_of(row, stamps):
    """How the page tells the time of a row, which is empty where only a time of day is known."""
    if row["time_utc"] != "":
        return row["time_utc"].replace("T", " ").replace("Z", " UTC")
    stamp = stamps[int(row["message"])]
    if stamp == 0:
        return "a time that is not known"
    second, fraction = divmod(stamp, SECOND)
    clock = f"{second // 3600:02}:{second // 60 % 60:02}:{second % 60:02}"
    return clock + f".{fraction:09}".rstrip("0").rstrip(".") + " UTC, no date"


def expect_number(text, unit, number, precision):
    """The page shows the number of the table in this unit, as precisely as it says."""
    if number == "":
        assert text == "–"
    else:
        assert text.endswith(unit)
        assert float(text.removesuffix(unit)) == pytest.approx(float(number), abs=precision)


def degrees_of(text):
    """Both coordinates of a position as the page shows it."""
    result = []
    for coordinate in text.split(", "):
        whole, minutes, letter = re.fullmatch(r"(\d+)°(\d+\.\d{3}) ([NSEW])", coordinate).groups()
        size = int(whole) + float(minutes) / 60
        result.append(-size if letter in "SW" else size)
    return result


def expect_values(found, row, time):
    """What the page shows is what the table says."""
    assert found["time"] == time
    expect_number(found["Speed"], " km/h", row["speed_kmh"], 0.0051)
    expect_number(found["Course"], "°", row["course_deg"], 0.0051)
    expect_number(found["Altitude"], " m", row["altitude_m"], 0.00051)
    expect_number(found["Satellites"], "", row["satellites"], 0)
    expect_number(found["HDOP"], "", row["hdop"], 0.0051)
    assert found["Quality"].split(" ")[0] == (row["quality"] or "–")
    if row["valid"] == "false":
        assert found["Position"] == "not valid"
    else:
        position = [float(row["latitude_deg"]), float(row["longitude_deg"])]
        assert degrees_of(found["Position"]) == pytest.approx(position, abs=0.00051 / 60)


def step_through(screen):
    """The values of all moments of the page, by the keyboard."""
    if screen.run("return document.getElementById('moment').hidden"):
        return []
    count = int(screen.run("return document.getElementById('slider').max")) + 1
    screen.run("document.getElementById('slider').focus()")
    press(screen, Keys.HOME)
    found = [values(screen)]
    for _ in range(count - 1):
        press(screen, Keys.ARROW_RIGHT)
        found.append(values(screen))
    return found


def hover(screen, selector, x, y=0.5, index=0):
    """Points at a place of an element, as parts of its size."""
    element = screen.driver.find_elements("css selector", selector)[index]
    screen.run("arguments[0].scrollIntoView({block: 'center'})", element)
    size = element.size
    ActionChains(screen.driver, duration=0).move_to_element_with_offset(
        element, round((x - 0.5) * size["width"]), round((y - 0.5) * size["height"])).perform()
    return element


def drag(screen, begin, end, index=0):
    """Draws the mouse over a chart, from one part of its width to another."""
    element = hover(screen, ".plot", begin, index=index)
    width = element.size["width"]
    ActionChains(screen.driver, duration=0).click_and_hold().move_by_offset(
        round((end - begin) * width / 2), 0).move_by_offset(
        round((end - begin) * width / 2), 0).release().perform()
    screen.settle()


def windows(screen):
    """The times at the ends of each chart's axis, in milliseconds."""
    return screen.run("""
        return [...document.querySelectorAll('.plot')].map(plot => plot.chart.xAxisRange());""")


def zoomed(screen):
    """How many times the map is larger than at first."""
    return screen.run("""
        const scale = () => Number(document.querySelector('.drive-lines').getAttribute('transform')
            .match(/scale\\((.*)\\)/)[1]);
        window.atFirst = window.atFirst || scale();
        return scale() / window.atFirst;""")


def place_of(screen, selector):
    """The middle of a mark in the picture, in the picture's units."""
    return screen.run("""
        const found = document.querySelector(arguments[0]).getAttribute('transform')
            .match(/translate\\(([-.\\d]+) ([-.\\d]+)\\)/);
        return [Number(found[1]), Number(found[2])];""", selector)


def focus(screen, name):
    screen.run("document.getElementById(arguments[0]).focus()", name)


def select(screen, name, value):
    """Chooses from a list as a hand would."""
    screen.run("""
        const [name, value] = arguments;
        const list = document.getElementById(name);
        list.value = value;
        list.dispatchEvent(new Event('change'));""", name, value)
    screen.settle()


def page_of(program, *data):
    traces = []
    for number, bytes_of_trace in enumerate(data):
        traces.append(program.folder / (f"drive{number or ''}.trace"))
        traces[-1].write_bytes(bytes_of_trace)
    return program.report(*traces)


# ---- Real logs


def test_shows_every_fix_of_a_log(screen, program, log):
    trace = program.record(log)
    expect_sound(screen, program.report(trace))
    rows = program.rows(trace)
    stamps = program.stamps(trace)
    times = [time_of(row, stamps) for row in rows]
    found = step_through(screen)
    by_time = {value["time"]: value for value in found}
    assert set(times) == set(by_time)
    for row, time in zip(rows, times):
        # Fixes of one time cannot be told apart over time.
        if times.count(time) == 1:
            expect_values(by_time[time], row, time)
    assert screen.logs()[0] == []


# ---- Together


def test_hovering_over_a_chart_marks_the_place_and_the_other_charts(screen, program):
    screen.open(page_of(program, drive()))
    for index in range(4):
        hover(screen, ".plot", 0.4 + index / 10, index=index)
        hairs = screen.run("""
            return [...document.querySelectorAll('.hair')].map(hair => hair.style.left);""")
        assert len(set(hairs)) == 1
        second = int(values(screen)["Speed"].split(".")[0]) / 1.852 * 4
        ends = [place_of(screen, mark) for mark in ["#here", "#start0", "#end0"]]
        for here, first, last in zip(*ends):
            assert here == pytest.approx(first + (last - first) * second / 299, abs=60)


def test_hovering_over_the_track_marks_the_time(screen, program):
    screen.open(page_of(program, drive()))
    for part in [0.3, 0.45, 0.6]:
        start, end = place_of(screen, "#start0"), place_of(screen, "#end0")
        mark = [a + part * (b - a) for a, b in zip(start, end)]
        hover(screen, "#track", mark[0] / 10000, mark[1] / 7600)
        found = values(screen)
        assert float(found["Altitude"].split(" ")[0]) == pytest.approx(500 + 29.9 * part, abs=0.4)
        hair = screen.run("return parseFloat(document.querySelector('.hair').style.left)")
        x = screen.run("""
            const [first, last] = arguments;
            const chart = document.querySelector('.plot').chart;
            return chart.toDomXCoord(first + arguments[2] * (last - first));""",
            drives.START * 1000, (drives.START + 299) * 1000, part)
        assert hair == pytest.approx(x, abs=6)


def test_dragging_over_a_chart_zooms_all(screen, program):
    screen.open(page_of(program, drive()))
    whole = windows(screen)
    assert zoomed(screen) == 1
    for index in range(4):
        drag(screen, 0.4, 0.6, index)
        found = windows(screen)
        assert all(window == found[0] for window in found)
        length = whole[0][1] - whole[0][0]
        assert found[0][1] - found[0][0] == pytest.approx(length * 0.22, rel=0.1)
        assert zoomed(screen) > 2.5
        if index % 2 == 0:
            press(screen, Keys.ESCAPE)
        else:
            ActionChains(screen.driver, duration=0).double_click().perform()
        assert windows(screen) == whole
        assert zoomed(screen) == pytest.approx(1)


def test_works_by_keyboard(screen, program):
    screen.open(page_of(program, drive()))
    whole = windows(screen)
    screen.run("document.getElementById('slider').focus()")
    time = lambda: values(screen)["time"].split(" ")[1]
    press(screen, Keys.HOME)
    assert time() == "12:35:19"
    press(screen, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ARROW_LEFT)
    assert time() == "12:35:20"
    ActionChains(screen.driver).key_down(Keys.SHIFT).send_keys(Keys.ARROW_RIGHT).key_up(
        Keys.SHIFT).perform()
    assert time() == "12:35:30"
    press(screen, Keys.PAGE_UP)
    assert time() == "12:37:10"
    press(screen, Keys.END, Keys.ARROW_RIGHT)
    assert time() == "12:40:18"
    press(screen, "+", "+")
    length = whole[0][1] - whole[0][0]
    begin, end = windows(screen)[3]
    assert end - begin == pytest.approx(length / 4)
    for _ in range(200):
        press(screen, Keys.ARROW_LEFT)
    assert time() == "12:36:58"
    begin, end = windows(screen)[0]
    assert begin <= (drives.START + 99) * 1000 <= end
    assert end - begin == pytest.approx(length / 4)
    press(screen, "-", "-", "-")
    assert windows(screen) == whole
    for name in ["charts", "track"]:
        focus(screen, name)
        press(screen, Keys.HOME, Keys.ARROW_RIGHT)
        assert time() == "12:35:20"
        press(screen, "+")
        assert windows(screen) != whole
        press(screen, Keys.ESCAPE)
        assert windows(screen) == whole


def test_leaves_keys_to_the_browser_where_nothing_of_the_drive_has_the_focus(screen, program):
    rows = b"".join(message((drives.START + i) * SECOND, b"$X%04d,1\r\n" % i, sentence(
        b"GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,211126,,")) for i in range(60))
    screen.look(width=390, height=500, phone=True)
    screen.open(page_of(program, rows))
    whole, time = windows(screen), values(screen)["time"]
    keys = [Keys.ARROW_RIGHT, Keys.ARROW_LEFT, "+", "-", Keys.END, Keys.ARROW_RIGHT]
    screen.run("document.activeElement.blur()")
    press(screen, *keys)
    assert (windows(screen), values(screen)["time"]) == (whole, time)
    # The table of sentences scrolls, and a text that was selected stays so.
    screen.run("""
        getSelection().selectAllChildren(document.getElementById('moment-time'));
        document.querySelector('.scroll').focus();""")
    before = screen.run("return document.querySelector('.scroll').scrollLeft")
    press(screen, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
    screen.settle()
    assert before == 0 < screen.run("return document.querySelector('.scroll').scrollLeft")
    assert screen.run("return getSelection().toString()") == time
    assert (windows(screen), values(screen)["time"]) == (whole, time)


def test_a_click_gives_the_charts_and_the_track_their_keys(screen, program):
    screen.open(page_of(program, drive()))
    for selector in [".plot", "#track"]:
        hover(screen, selector, 0.5)
        ActionChains(screen.driver, duration=0).click().perform()
        time = values(screen)["time"]
        press(screen, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        assert values(screen)["time"] > time


def test_nothing_with_focus_hides_under_the_track(screen, program):
    screen.look(width=390, height=700, phone=True)
    screen.open(page_of(program, drive(), drive(200)))
    place = "document.querySelector('.place').getBoundingClientRect()"
    screen.run("window.scrollTo(0, document.documentElement.scrollHeight)")
    seen = 0
    for _ in range(40):
        ActionChains(screen.driver, duration=0).key_down(Keys.SHIFT).send_keys(Keys.TAB).key_up(
            Keys.SHIFT).perform()
        screen.settle()
        found = screen.run(f"""
            const active = document.activeElement;
            const box = active.getBoundingClientRect();
            const place = {place};
            return active === document.body || active.closest('.place') ? null
                : [active.id || active.className || active.tagName, box.bottom - place.bottom,
                   box.top >= place.bottom - 1 || box.height > innerHeight - place.height];""")
        if found is not None:
            seen += 1
            # What is taller than the room below the track may begin above it.
            assert found[1] > 20 and found[2], found
    assert seen > 10


def test_tells_those_who_listen_time_and_speed_at_a_step(screen, program):
    screen.open(page_of(program, drive()))
    focus(screen, "charts")
    press(screen, Keys.HOME, Keys.ARROW_RIGHT)
    assert screen.text("spoken") == "12:35:20, 0.46 km/h"
    assert screen.run("return document.getElementById('spoken').getAttribute('aria-live')") == "polite"
    focus(screen, "slider")
    press(screen, Keys.ARROW_RIGHT)
    # The slider is read aloud itself.
    assert screen.run("return document.getElementById('slider').getAttribute('aria-valuetext')"
                      ) == "12:35:21, 0.93 km/h"
    assert screen.text("spoken") == "12:35:20, 0.46 km/h"


def test_buttons_and_slider_work_without_a_mouse(screen, program):
    screen.open(page_of(program, drive()))
    whole = windows(screen)
    for name in ["zoom-in", "zoom-in", "zoom-out", "zoom-all"]:
        screen.run("document.getElementById(arguments[0]).focus()", name)
        press(screen, Keys.ENTER)
    assert windows(screen) == whole
    assert screen.run("return document.getElementById('zoom-all').disabled")
    screen.run("""
        const slider = document.getElementById('slider');
        slider.value = 100;
        slider.dispatchEvent(new Event('input'));""")
    assert values(screen)["time"] == "2026-11-21 12:36:59 UTC"
    assert screen.run("return document.getElementById('slider').getAttribute('aria-valuetext')"
                      ) == "12:36:59, 46.3 km/h"


def test_shows_the_trace_line_of_the_moment(screen, program):
    screen.open(page_of(program, drive()))
    screen.run("document.getElementById('slider').focus()")
    press(screen, Keys.HOME)
    stamp = "%016x" % (drives.START * SECOND)
    sentences = fix(0, 48.1, 11.5, 0, 500, 6)[14:].decode().replace("\r\n", " ").strip()
    assert values(screen)["line"] == f"{stamp} 00000000  GPS         | {sentences}"


# ---- What is drawn


def column_has_line(screen, chart, milliseconds, colour="--line"):
    """Whether the chart's line stands at this time, by the points of its picture."""
    return screen.run("""
        const [index, time, name] = arguments;
        const plot = document.querySelectorAll('.plot')[index];
        const chart = plot.chart;
        const area = chart.getArea();
        const canvas = [...plot.querySelectorAll('canvas')][0];
        const scale = canvas.width / parseFloat(canvas.style.width);
        const x = Math.round(chart.toDomXCoord(time) * scale);
        const points = canvas.getContext('2d').getImageData(x, 0, 1, (area.h - 3) * scale).data;
        const line = getComputedStyle(document.documentElement).getPropertyValue(name).trim();
        const rgb = [1, 3, 5].map(i => parseInt(line.slice(i, i + 2), 16));
        for (let i = 0; i < points.length; i += 4) {
            if (points[i + 3] > 150 && rgb.every((c, k) => Math.abs(points[i + k] - c) < 40)) {
                return true;
            }
        }
        return false;""", chart, milliseconds, colour)


def test_leaves_gaps_open(screen, program):
    data = b"".join(fix(i, 48.1 + i * 0.0001, 11.5, 20 + i % 7, 500 + i % 5)
                    for i in range(300) if i < 100 or i > 160)
    screen.open(page_of(program, data))
    for chart in range(4):
        assert column_has_line(screen, chart, (drives.START + 50) * 1000)
        assert not column_has_line(screen, chart, (drives.START + 130) * 1000)
        assert column_has_line(screen, chart, (drives.START + 250) * 1000)
    dashed, whole = screen.run("""
        return ['.gap', '.drive-lines'].map(name =>
            document.querySelector('#track ' + name).getBoundingClientRect().height);""")
    assert dashed == pytest.approx(61 / 299 * whole, rel=0.04)


def test_opens_the_line_of_a_value_that_is_missing(screen, program):
    data = b"".join(fix(i, 48.1 + i * 0.0001, 11.5, 20, 500, 0 if 100 < i < 160 else 8,
                               0 if 100 < i < 160 else 1, "V" if 100 < i < 160 else "A")
                    for i in range(300))
    screen.open(page_of(program, data))
    lost = (drives.START + 130) * 1000
    assert [column_has_line(screen, chart, lost) for chart in range(2)] == [False, False]
    hover(screen, ".plot", 0.45)
    assert values(screen)["Position"] == "not valid"
    assert screen.run("return document.getElementById('here').style.display") == "none"


def test_crosses_the_180th_meridian(screen, program):
    data = b"".join(fix(i, -17, (179.99 + i * 0.0001 + 180) % 360 - 180)
                    for i in range(200))
    screen.open(page_of(program, data))
    start, end = place_of(screen, "#start0"), place_of(screen, "#end0")
    assert end[0] - start[0] == pytest.approx(8600, abs=2)
    assert screen.text("scale-length") == "500 m"
    assert screen.run("return document.querySelector('#track .gap')") is None


def test_shows_all_where_fixes_are_always_far_apart(screen, program):
    screen.open(page_of(program, b"".join(fix(i * 120) for i in range(60))))
    assert screen.text("shown") == "60 fixes"
    assert len(screen.driver.find_elements("css selector", "#parts option")) == 2


def test_leaves_years_out_that_a_receiver_made_up(screen, program):
    years = 20 * 365 * 86400
    early = b"".join(fix(i - years, status="V", quality=0) for i in range(30))
    screen.open(page_of(program, early + drive()))
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(29000 + 299000, rel=0.05)
    assert len(screen.driver.find_elements("css selector", "#parts option")) == 3
    select(screen, "parts", 1)
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(299000, rel=0.03)
    assert screen.text("shown") == "300 fixes"
    focus(screen, "slider")
    press(screen, Keys.HOME)
    assert values(screen)["time"] == "2006-11-26 12:35:19 UTC"
    assert screen.text("shown") == "330 fixes"


@pytest.mark.parametrize("data", [
    b"", message(0, b"$GPTXT,01,01,02,hello*00\r\n"),
    fix(0, status="V", quality=0), fix(0),
    fix(0) + fix(0, knots=55) + fix(0, knots=5),
    message(drives.START * SECOND,
                   sentence(b"GPRMC,123519,A,4807.038,N,01131.000,E,,,230394,,")),
], ids=["empty", "no fix", "invalid", "one", "one time", "no values"])
def test_shows_little_as_well_as_much(screen, program, data):
    expect_sound(screen, page_of(program, data))
    press(screen, Keys.ARROW_RIGHT, Keys.ARROW_LEFT, "+", "-", Keys.ESCAPE)
    assert screen.logs()[0] == []


# ---- Several drives

DAY = 86400


def second_run(seconds=260, day=1):
    """The road of drive() on another day, a quarter faster, and higher."""
    return b"".join(fix(day * DAY + i, 48.1 + i * 0.000125, 11.5 + i * 0.00025, 40 + i / 4, 600 + i / 10)
                    for i in range(seconds))


def far_away(seconds=100):
    return b"".join(fix(2 * DAY + i, -33.8 + i * 0.0001, 151.2 + i * 0.0001) for i in range(seconds))


def test_gives_each_drive_a_colour_and_an_entry(screen, program):
    screen.open(page_of(program, drive(), second_run()))
    entries = screen.driver.find_elements("css selector", ".drives li")
    assert [entry.text.replace("\n", " ") for entry in entries] == [
        f"1: {program.folder}/drive.trace 2026-11-21 12:35:19 to 12:40:18 UTC, 4 min 59 s, "
        "5.56 km, start in an online map",
        f"2: {program.folder}/drive1.trace 2026-11-22 12:35:19 to 12:39:38 UTC, 4 min 19 s, "
        "6.02 km, start in an online map"]
    swatches, lines = screen.run("""
        const swatches = [...document.querySelectorAll('.drives .swatch')].map(
            swatch => getComputedStyle(swatch).backgroundColor);
        return [swatches, swatches.map((_, drive) => getComputedStyle(document.querySelector(
            '.drive-lines[data-drive="' + drive + '"] .lines use')).stroke)];""")
    assert swatches == lines and len(set(swatches)) == 2
    # No line leads from one to the other: each has a beginning, and nothing is dashed.
    begins = screen.run("""
        return [...document.querySelectorAll('#track path[id^=line]')].map(
            path => path.getAttribute('d').split('M').length - 1);""")
    assert begins == [1, 1]
    assert screen.driver.find_elements("css selector", "#track .gap") == []


def test_puts_drives_one_behind_the_other(screen, program):
    screen.open(page_of(program, drive(), second_run()))
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(299000 + 259000, rel=0.05)
    first, gap, second = [begin + part * (end - begin) for part in [0.3, 0.539, 0.8]]
    for chart in range(2):
        assert [column_has_line(screen, chart, x, "--d0") for x in [first, gap, second]] == [
            True, False, False]
        assert [column_has_line(screen, chart, x, "--d1") for x in [first, gap, second]] == [
            False, False, True]
    assert [text for text, _, _ in labels(screen, "x")[3]] == [
        "12:36", "12:37", "12:38", "12:39", "12:40", "12:36", "12:37", "12:38", "12:39"]
    assert screen.run("return document.querySelector('.axis-name').textContent"
                      ) == "UTC, 2026-11-21 to 2026-11-22"
    hover(screen, ".plot", 0.8)
    assert values(screen)["time"].startswith("2026-11-22 12:37:")
    assert values(screen)["Message"].endswith(" of " + str(program.folder / "drive1.trace"))


def readings(screen, chart):
    return screen.run("""
        return [...document.querySelectorAll('.reading')[arguments[0]].children].map(
            reading => reading.textContent);""", chart)


def test_compares_two_runs_by_time(screen, program):
    screen.open(page_of(program, drive(), second_run()))
    select(screen, "layout", "over")
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(299000, rel=0.03)
    assert all(column_has_line(screen, 0, 100000, colour) for colour in ["--d0", "--d1"])
    assert [text for text, _, _ in labels(screen, "x")[3]] == [
        "0:01:00", "0:02:00", "0:03:00", "0:04:00"]
    # Where the upper line is, the second drive is pointed at.
    chart = "document.querySelectorAll('.plot')[0].chart"
    x, y = screen.run(f"""
        const plot = document.querySelectorAll('.plot')[0].getBoundingClientRect();
        return [{chart}.toDomXCoord(100000) / plot.width,
                {chart}.toDomYCoord(65 * 1.852) / plot.height];""")
    hover(screen, ".plot", x, y)
    assert values(screen)["time"].startswith("2026-11-22 12:36:5")
    second = int(values(screen)["time"][-6:-4]) + 60 - 19
    assert readings(screen, 0) == [f"2: {round((40 + second / 4) * 1.852, 2):g} km/h",
                                   f"1: {round(second / 4 * 1.852, 2):g} km/h"]
    assert values(screen)["From the start"].startswith(f"0:01:{second - 60:02}, ")
    rings = screen.run("""
        return [...document.querySelectorAll('.here')].filter(ring => ring.style.display === '')
            .map(ring => ring.getAttribute('transform'));""")
    assert len(rings) == len(set(rings)) == 2


def test_compares_two_runs_by_distance(screen, program):
    screen.open(page_of(program, drive(), second_run()))
    select(screen, "layout", "over")
    select(screen, "along", "distance")
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(6020, rel=0.03)
    assert [text for text, _, _ in labels(screen, "x")[3]] == ["0", "1", "2", "3", "4", "5", "6"]
    assert screen.run("return document.querySelector('.axis-name').textContent"
                      ) == "km from each start"
    hover(screen, ".plot", 0.5)
    places = screen.run("""
        return [...document.querySelectorAll('.here')].map(ring => {
            const box = ring.getBoundingClientRect();
            return [box.left, box.top];
        });""")
    # The drive that is pointed at lies above the other.
    above = screen.run("""
        return [...document.querySelectorAll('.drive-lines')].map(lines => lines.dataset.drive);""")
    assert above[-1] == {"drive.trace": "0", "drive1.trace": "1"}[
        values(screen)["Message"].split("/")[-1]]
    # Both have come to the same place of the road.
    assert places[0] == pytest.approx(places[1], abs=8)
    assert len(readings(screen, 1)) == 2
    press(screen, Keys.ESCAPE)
    select(screen, "layout", "behind")
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx(5560 + 6020, rel=0.05)


def test_takes_one_drive_by_distance(screen, program):
    screen.open(page_of(program, drive()))
    assert screen.run("return document.getElementById('layout-label').hidden")
    select(screen, "along", "distance")
    assert [text for text, _, _ in labels(screen, "x")[3]][-1] == "5"
    hover(screen, ".plot", 0.5)
    assert values(screen)["From the start"].split(", ")[1].endswith(" km")


def test_begins_where_most_fixes_are_and_leads_to_the_others(screen, program):
    screen.open(page_of(program, far_away(), drive(), second_run()))

    def is_in_picture(mark):
        x, y = place_of(screen, mark)
        return 0 <= x <= 10000 and 0 <= y <= 7600

    marks = ["#start0", "#start1", "#start2"]
    assert [is_in_picture(mark) for mark in marks] == [False, True, True]
    assert screen.text("scale-length") == "1 km"
    screen.driver.find_element("css selector", ".drives button").click()
    screen.settle()
    assert [is_in_picture(mark) for mark in marks] == [True, False, False]
    assert screen.text("scale-length") == "200 m"
    assert values(screen)["time"].startswith("2026-11-23 ")
    assert screen.text("shown") == "100 fixes"
    select(screen, "parts", -1)
    focus(screen, "slider")
    press(screen, Keys.END)
    assert [is_in_picture(mark) for mark in marks] == [False, True, True]


def test_draws_many_drives(screen, program):
    screen.open(page_of(program, *[b"".join(
        fix(j * 1000 + i, 48 + j * 0.001, 11 + i * 0.0001, 30 + j) for i in range(50))
        for j in range(100)]))
    assert len(screen.driver.find_elements("css selector", ".drives button")) == 100
    select(screen, "layout", "over")
    hover(screen, ".plot", 0.5)
    assert len(screen.driver.find_elements("css selector", ".here")) == 100
    assert screen.logs()[0] == []


# ---- Text is data


HOSTILE = [b"<script>window.broken=1</script>", b"<img src=x onerror=window.broken=1>",
           b"</script><script>window.broken=1</script>", b"]]>--><!--", b"\"'`${1}\\u003c\\",
           b"\x01\x1b[31m\x7f", b"\xff\xfe\xc0\x80", "\u2028\u2029\u202eé".encode(),
           b"{{data}}{{title}}", b"&lt;&amp;&#60;", b"~~~~0~!~ ~", b"javascript:window.broken=1"]


def test_takes_hostile_text_for_text(screen, program):
    data = b""
    for i, text in enumerate(HOSTILE):
        data += message((drives.START + i) * SECOND, sentence(
            b"GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,," + text.replace(
                b"\n", b"")), b"$" + text + b"\r\n")
    expect_sound(screen, page_of(program, data))
    found = step_through(screen)
    assert len(found) == len(HOSTILE)
    for text, value in zip(HOSTILE, found):
        escaped = "".join(
            character if character.isprintable() or character in "\u2028\u2029"
            else "".join("\\x%02x" % byte for byte in character.encode(errors="surrogateescape"))
            for character in text.decode(errors="surrogateescape").replace("\\", "\\\\"))
        assert escaped in value["line"]
    assert screen.run("return window.broken") is None
    assert screen.logs()[0] == []


def test_takes_hostile_file_names_for_text(screen, program):
    names = [b"<script>window.broken=1<!--.trace", b"\"'&]]>.trace", b"\xff\x1b[31m.trace",
             b"</script><img src=x onerror=window.broken=1>.trace", b"${1}{{data}}`\n.trace",
             "\u2028\u202e&lt;.trace".encode()]
    (program.folder / "<").mkdir()
    for i, name in enumerate(names):
        with open(os.path.join(os.fsencode(program.folder), name), "wb") as trace:
            trace.write(fix(i))
    shown_names = ["<script>window.broken=1<!--.trace", "\"'&]]>.trace", "\\xff\\x1b[31m.trace",
                   "</script><img src=x onerror=window.broken=1>.trace", "${1}{{data}}`\\x0a.trace",
                   "\u2028\\xe2\\x80\\xae&lt;.trace"]
    expect_sound(screen, program.report(*names))
    files = screen.run("return document.querySelector('.facts .wide b').textContent")
    assert files == ", ".join(f"{name} ({len(fix(0))} bytes)" for name in shown_names)
    assert [value["Message"] for value in step_through(screen)] == [
        f"1 of {name}" for name in shown_names]
    assert screen.run("return window.broken") is None
    for name, shown in zip(names, shown_names):
        screen.open(program.report(name))
        title = shown.split("/")[-1]
        assert screen.run("return document.querySelector('h1').textContent") == title
        assert screen.run("return window.broken") is None
    assert screen.logs()[0] == []


def test_forbids_every_connection(screen, program):
    screen.open(page_of(program, drive()))
    screen.logs()
    refused = screen.driver.execute_async_script("""
        const done = arguments[0];
        const image = new Image();
        const results = [];
        image.onerror = () => {
            results.push('image');
            fetch('https://example.org/').catch(() => {
                results.push('fetch');
                try {
                    new WebSocket('wss://example.org/').onerror = () => done([...results, 'socket']);
                } catch (error) {
                    done([...results, 'socket']);
                }
            });
        };
        image.src = 'https://example.org/x.png';""")
    assert refused == ["image", "fetch", "socket"]
    console, requests = screen.logs()
    assert len(console) >= 3 and all("Content Security Policy" in line for line in console)
    assert requests == []
    screen.run("""
        const script = document.createElement('script');
        script.textContent = 'window.broken = 1';
        document.body.append(script);""")
    assert screen.run("return window.broken") is None


def test_links_to_a_map_and_to_nothing_else(screen, program):
    screen.open(page_of(program, drive()))
    links = screen.run("""
        return [...document.querySelectorAll('[href], [src]')]
            .map(element => [element.tagName, element.getAttribute('href') || element.src,
                             element.rel || '']).filter(([tag]) => tag !== 'use');""")
    assert links == [["A", "https://www.openstreetmap.org/?mlat=48.100000&mlon=11.500000#map=16/"
                      "48.100000/11.500000", "noopener noreferrer"]]


# ---- For everybody


def contrasts(screen):
    """The contrast of each text with what is behind it, by WCAG, and the text."""
    return screen.run("""
        const channel = c => (c /= 255) <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4;
        const numbers = colour => colour.match(/[\\d.]+/g).map(Number);
        const light = ([r, g, b]) => 0.2126 * channel(r) + 0.7152 * channel(g) + 0.0722 * channel(b);
        const behind = element => {
            for (; element; element = element.parentElement) {
                const colour = numbers(getComputedStyle(element).backgroundColor);
                if (colour.length === 3 || colour[3] === 1) {
                    return colour;
                }
            }
            return [255, 255, 255];
        };
        const result = [];
        const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
        while (walker.nextNode()) {
            const element = walker.currentNode.parentElement;
            if (walker.currentNode.data.trim() === '' || element.getClientRects().length === 0
                || element.closest('script, style, [disabled]')) {
                continue;
            }
            const isSvg = element instanceof SVGElement;
            const style = getComputedStyle(element);
            const text = light(numbers(isSvg ? style.fill : style.color));
            const paper = light(behind(isSvg ? element.ownerSVGElement : element));
            const contrast = (Math.max(text, paper) + 0.05) / (Math.min(text, paper) + 0.05);
            result.push([contrast, walker.currentNode.data.trim()]);
        }
        return result;""")


@pytest.mark.parametrize("dark", [False, True], ids=["light", "dark"])
def test_has_the_contrast_that_people_need(screen, program, dark):
    screen.look(dark=dark)
    screen.open(page_of(program, drive()))
    found = contrasts(screen)
    assert len(found) > 50
    assert [pair for pair in found if pair[0] < 4.5] == []


def test_names_everything_for_those_who_do_not_see_it(screen, program):
    screen.open(page_of(program, drive()))
    nodes = screen.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
    named = {}
    for node in nodes:
        if not node["ignored"]:
            role = node["role"]["value"]
            named.setdefault(role, []).append(node.get("name", {}).get("value", ""))
    assert sorted(named["heading"]) == ["At 2026-11-21 12:40:18 UTC", "Over time", "Sentences",
                                        "Track", "What it is", "drive.trace"]
    assert named["image"] == [
        "The track, from 48°6.000 N, 11°30.000 E at 2026-11-21 12:35:19 UTC to 48°7.794 N, "
        "11°33.588 E at 2026-11-21 12:40:18 UTC",
        "Speed over time: least 0 km/h at 2026-11-21 12:35:19 UTC, greatest 138.44 km/h at "
        "2026-11-21 12:40:18 UTC",
        "Altitude over time: least 500 m at 2026-11-21 12:35:19 UTC, greatest 529.9 m at "
        "2026-11-21 12:40:18 UTC",
        "Satellites in use over time: least 6 at 2026-11-21 12:35:19 UTC, greatest 8 at "
        "2026-11-21 12:38:39 UTC",
        "Fix quality over time: least 1 at 2026-11-21 12:35:19 UTC, greatest 1 at "
        "2026-11-21 12:35:19 UTC"]
    assert named["slider"] == ["Moment"]
    assert named["columnheader"] == ["Code", "Count", "Wrong checksum", "First, UTC", "Last, UTC"]
    for role in ["button", "link", "region", "list", "image"]:
        assert all(named.get(role, [])), role


@pytest.mark.parametrize("width", [320, 390, 768, 1366, 1920])
def test_fits_every_width(screen, program, width):
    screen.look(width=width, height=800, phone=width < 600)
    screen.open(page_of(program, drive()))
    assert screen.run("return document.documentElement.scrollWidth") <= width
    for selector in ["#track", ".plot canvas", "#moment-line"]:
        found = screen.run("""
            const box = document.querySelector(arguments[0]).getBoundingClientRect();
            return [box.left, box.right];""", selector)
        assert found[0] >= 0 and found[1] <= width, selector


def labels(screen, axis):
    """What stands at an axis of each chart, with its left and right end."""
    return screen.run("""
        return [...document.querySelectorAll('.plot')].map(plot =>
            [...plot.querySelectorAll('.dygraph-axis-label-' + arguments[0])]
                .filter(label => label.textContent !== '').map(label => {
                    const range = document.createRange();
                    range.selectNodeContents(label);
                    const box = range.getBoundingClientRect();
                    return [label.textContent, box.left, box.right];
                }));""", axis)


def test_labels_axes_with_round_numbers_and_units(screen, program):
    screen.open(page_of(program, drive()))
    captions = [element.text.split("\n")[0] for element in screen.driver.find_elements(
        "css selector", ".caption")]
    assert captions == ["Speed, km/h", "Altitude, m", "Satellites in use", "Fix quality"]
    for chart in labels(screen, "y"):
        numbers = [float(text) for text, _, _ in chart]
        assert len(numbers) >= 2
        for low, high in zip(numbers, numbers[1:]):
            assert f"{high - low:g}"[0] in "125" and low % (high - low) == 0
    assert [text for text, _, _ in labels(screen, "x")[3]] == [
        "12:36", "12:37", "12:38", "12:39", "12:40"]
    assert screen.run("return document.querySelector('.axis-name').textContent") == "UTC, 2026-11-21"


@pytest.mark.parametrize("width", [320, 1366])
@pytest.mark.parametrize("step", [0.001, 0.05, 1, 60, 3000, 86400, 20 * 86400])
def test_labels_of_the_time_stand_apart(screen, program, width, step):
    screen.look(width=width, height=800, phone=width < 600)
    screen.open(page_of(program, b"".join(fix(i * step) for i in range(100))))
    shown = sorted(labels(screen, "x")[3], key=lambda label: label[1])
    assert len(shown) >= (1 if step < 0.01 or step > 1e6 else 2)
    assert all(a[2] < b[1] for a, b in zip(shown, shown[1:])), shown
    assert shown[0][1] >= 0 and shown[-1][2] <= width, shown


def test_a_finger_on_a_chart_marks_the_moment(screen, program):
    screen.look(width=390, height=800, phone=True)
    screen.open(page_of(program, drive()))
    box = screen.run("""
        const plot = document.querySelectorAll('.plot')[1];
        plot.scrollIntoView({block: 'center'});
        const box = plot.getBoundingClientRect();
        return [box.left, box.top, box.width, box.height];""")
    whole = windows(screen)
    times = []
    for part in [0.3, 0.5, 0.7]:
        point = {"x": box[0] + part * box[2], "y": box[1] + box[3] / 2}
        kind = "touchStart" if part == 0.3 else "touchMove"
        screen.driver.execute_cdp_cmd("Input.dispatchTouchEvent",
                                      {"type": kind, "touchPoints": [point]})
        screen.settle()
        times.append(values(screen)["time"])
    screen.driver.execute_cdp_cmd("Input.dispatchTouchEvent",
                                  {"type": "touchEnd", "touchPoints": []})
    assert times == sorted(set(times)) and len(times) == 3
    assert windows(screen) == whole


def touch(screen, kind, *points):
    screen.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
        "type": kind, "touchPoints": [{"x": x, "y": y, "id": number}
                                      for number, (x, y) in enumerate(points)]})


def pinch(screen, selector):
    """Two fingers on the element move apart to twice their distance."""
    left, top, width, height = screen.run("""
        const element = document.querySelector(arguments[0]);
        element.scrollIntoView({block: 'center'});
        const box = element.getBoundingClientRect();
        return [box.left, box.top, box.width, box.height];""", selector)
    row = top + height / 2
    touch(screen, "touchStart", (left + 0.4 * width, row), (left + 0.6 * width, row))
    for part in [0.12, 0.16, 0.2]:
        touch(screen, "touchMove", (left + (0.5 - part) * width, row),
              (left + (0.5 + part) * width, row))
        screen.settle()
    touch(screen, "touchEnd")


def test_two_fingers_zoom_a_chart_and_the_track(screen, program):
    screen.look(width=390, height=800, phone=True)
    screen.open(page_of(program, drive()))
    whole = windows(screen)[0]
    assert zoomed(screen) == 1
    pinch(screen, ".plot")
    begin, end = windows(screen)[0]
    assert end - begin == pytest.approx((whole[1] - whole[0]) / 2, rel=0.02)
    screen.run("document.getElementById('zoom-all').click()")
    assert windows(screen)[0] == whole
    assert zoomed(screen) == pytest.approx(1)
    pinch(screen, "#track")
    assert zoomed(screen) == pytest.approx(2, rel=0.02)
    assert windows(screen)[0] == whole
    assert screen.run("return visualViewport.scale") == 1


def test_promises_what_fingers_can_do(screen, program):
    page = page_of(program, drive())
    for phone, drags, pinches in [(True, False, True), (False, True, False)]:
        screen.look(width=390, height=800, phone=phone)
        screen.open(page)
        hint = screen.driver.find_element("id", "hint").text
        assert ("Drag over a chart to zoom" in hint, "Two fingers zoom" in hint) == (drags, pinches)


@pytest.mark.parametrize("forced", [False, True], ids=["own", "forced"])
def test_shows_that_the_table_goes_on(screen, program, forced):
    screen.look(width=390, height=800, phone=True, forced=forced)
    screen.open(page_of(program, drive()))
    goes_on, shadows = screen.run("""
        const table = document.querySelector('.scroll');
        return [table.scrollWidth > table.clientWidth,
                getComputedStyle(table).backgroundImage.split('gradient').length - 1];""")
    assert goes_on and shadows == 4


@pytest.mark.parametrize("dark", [False, True], ids=["light", "dark"])
def test_keeps_its_colours_where_colours_are_forced(screen, program, dark):
    found = []
    for forced in [False, True]:
        screen.look(dark=dark, forced=forced)
        colours = []
        for traces in [[drive(), second_run()], [drive()]]:
            screen.open(page_of(program, *traces))
            colours += screen.run("""
                return [...document.querySelectorAll('.swatch, .lines use')].map(element =>
                    element.matches('.swatch') ? getComputedStyle(element).backgroundColor
                        : getComputedStyle(element).stroke);""")
        found.append(colours)
        assert screen.logs()[0] == []
    assert len(found[0]) > 10 and found[0] == found[1]
    # What is no colour of a line is the user's.
    assert screen.run("""
        const user = document.createElement('p');
        user.style.color = 'CanvasText';
        document.body.append(user);
        return getComputedStyle(document.querySelector('#track text')).fill
            === getComputedStyle(user).color;""")
    assert [pair for pair in contrasts(screen) if pair[0] < 4.5] == []


@pytest.mark.parametrize("width", [390, 1400])
@pytest.mark.parametrize("look", ["light", "dark", "forced"])
def test_shows_two_drives(screen, program, pictures, width, look):
    screen.look(width=width, height=900, dark=look != "light", phone=width < 600,
                forced=look == "forced")
    page = page_of(program, drive(), second_run())
    expect_sound(screen, page)
    assert screen.run("return document.documentElement.scrollWidth") <= width
    assert [pair for pair in contrasts(screen) if pair[0] < 4.5] == []
    select(screen, "layout", "over")
    if pictures:
        screen.picture(pictures / f"two-{width}-{look}.png", width)


def test_can_be_read_without_scripts(screen, program):
    page = page_of(program, drive())
    screen.driver.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
    try:
        screen.driver.get(page.resolve().as_uri())
        text = screen.driver.find_element("tag name", "body").text
    finally:
        screen.driver.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": False})
    assert "scripts are turned off" in text
    assert "Start\n48°6.000 N, 11°30.000 E at 2026-11-21 12:35:19 UTC" in text
    assert "$GPGGA 300 0" in text
    assert "Zoom in" not in text


def test_prints(screen, program):
    screen.look(dark=True)
    screen.open(page_of(program, drive()))
    pdf = screen.driver.execute_cdp_cmd("Page.printToPDF", {"preferCSSPageSize": True})
    assert base64.b64decode(pdf["data"]).startswith(b"%PDF")
    screen.look(width=718, height=1000, dark=True, media="print")
    screen.settle()
    assert screen.run("return getComputedStyle(document.body).color") == "rgb(27, 31, 36)"
    assert screen.run("return document.documentElement.scrollWidth") <= 718
    assert screen.run("return document.querySelector('.plot canvas').getBoundingClientRect().right"
                      ) <= 718
    assert [pair for pair in contrasts(screen) if pair[0] < 4.5] == []


def test_needs_no_browser_newer_than_five_years():
    """Nothing of the language that is newer than 2020, and of the page no newer functions."""
    folder = pathlib.Path(__file__).resolve().parents[2] / "tools" / "report" / "page"
    scripts = sorted(folder.glob("*.js"))
    assert len(scripts) == 6
    script = "".join(file.read_text() for file in scripts)
    for newer in [r"\?\?=", r"\|\|=", r"&&=", r"\.replaceAll\(", r"\.at\(", r"\.hasOwn\(",
                  r"\d_\d", r"structuredClone", r"\.findLast", r"\.toSorted\(", r"WeakRef",
                  r"DecompressionStream", r"Promise\.any", r"\bstatic\b"]:
        assert not re.search(newer, script), newer
    style = (folder / "page.css").read_text()
    for newer in [r":has\(", r"@layer", r"@container", r"\bnesting\b", r"color-mix", r"\ddvh"]:
        assert not re.search(newer, style), newer


# ---- However long


def test_shows_a_second_of_a_week(screen, program, request, pictures):
    page = program.folder / "week.html"
    maker = subprocess.Popen([request.config.getoption("--long-trace")], stdout=subprocess.PIPE)
    reporter = subprocess.Popen([program.path, "report", "-o", page, "-"], stdin=maker.stdout)
    maker.stdout.close()
    _, status, usage = os.wait4(reporter.pid, 0)
    reporter.returncode = os.waitstatus_to_exitcode(status)
    assert maker.wait() == 0 and reporter.returncode == 0
    assert usage.ru_maxrss * 1024 < MOST_MEMORY
    expect_sound(screen, page)

    # The second, which stands out, is what the page begins with.
    assert values(screen)["time"].startswith("2026-11-20 00:01:18")
    assert values(screen)["Speed"] == "234.5 km/h"
    assert "6,047,400 fixes" in screen.text("over-time")
    assert screen.text("shown") == ""
    drawn = int(screen.run("return document.getElementById('slider').max")) + 1
    assert 2000 < drawn < 20000
    assert f"{drawn:,} of the 6,047,400" in screen.text("over-time")
    # A column of the chart reaches up to it.
    assert column_has_line(screen, 0, (1794787200 + 345678) * 1000)

    # The tunnel cannot be seen in a week, and is open where it can be.
    screen.run("""
        const slider = document.getElementById('slider');
        const tunnel = arguments[0];
        const chart = document.querySelector('.plot').chart;
        const rows = chart.file_.map(row => row[0]);
        const before = rows.findIndex((time, i) => isNaN(chart.file_[i][1]));
        window.gap = [rows[before - 1], rows[before + 1]];""", 0)
    assert screen.run("return window.gap") == [(1794787200 + 300000) * 1000 - 100,
                                               (1794787200 + 300060) * 1000]
    if pictures:
        screen.picture(pictures / "week.png", 1366)
