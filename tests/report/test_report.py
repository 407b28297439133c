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


def time_of(row):
    if row["time_utc"] == "":
        return "a time that is not known"
    return row["time_utc"].replace("T", " ").replace("Z", " UTC")


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


def expect_values(found, row):
    """What the page shows is what the table says."""
    assert found["time"] == time_of(row)
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


def page_of(program, data, name="drive.trace"):
    trace = program.folder / name
    trace.write_bytes(data)
    return program.report(trace)


# ---- Real logs


def test_shows_every_fix_of_a_log(screen, program, log):
    trace = program.record(log)
    expect_sound(screen, program.report(trace))
    rows = program.rows(trace)
    times = [row["time_ns"] for row in rows]
    found = step_through(screen)
    by_time = {value["time"]: value for value in found}
    assert {time_of(row) for row in rows} == set(by_time)
    for row in rows:
        # Fixes of one time cannot be told apart over time.
        if times.count(row["time_ns"]) == 1:
            expect_values(by_time[time_of(row)], row)
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
        place = screen.run("""
            const mark = document.getElementById('here').dataset;
            return [Number(mark.x), Number(mark.y)];""")
        start, end = screen.run("""
            return ['start', 'end'].map(id => document.getElementById(id).dataset)
                .map(place => [Number(place.x), Number(place.y)]);""")
        for here, first, last in zip(place, start, end):
            assert here == pytest.approx(first + (last - first) * second / 299, abs=60)


def test_hovering_over_the_track_marks_the_time(screen, program):
    screen.open(page_of(program, drive()))
    for part in [0.3, 0.45, 0.6]:
        mark = screen.run("""
            const [start, end] = ['start', 'end'].map(id => document.getElementById(id).dataset);
            const at = part => [Number(start.x) + part * (end.x - start.x),
                                Number(start.y) + part * (end.y - start.y)];
            return at(arguments[0]);""", part)
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
    for index in range(4):
        drag(screen, 0.4, 0.6, index)
        zoomed = windows(screen)
        assert all(window == zoomed[0] for window in zoomed)
        length = whole[0][1] - whole[0][0]
        assert zoomed[0][1] - zoomed[0][0] == pytest.approx(length * 0.22, rel=0.1)
        assert screen.run("return document.getElementById('track').viewBox.baseVal.width") < 4000
        if index % 2 == 0:
            press(screen, Keys.ESCAPE)
        else:
            ActionChains(screen.driver, duration=0).double_click().perform()
        assert windows(screen) == whole
        assert screen.run("return document.getElementById('track').viewBox.baseVal.width") == 10000


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
    screen.run("document.activeElement.blur()")
    press(screen, Keys.ARROW_RIGHT)
    assert time() == "12:36:59"


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
    spoken = screen.run("return document.getElementById('slider').getAttribute('aria-valuetext')")
    assert spoken.startswith("2026-11-21 12:36:59 UTC, Position 48°6.600 N, 11°31.200 E, "
                             "Speed 46.3 km/h, ")


def test_shows_the_trace_line_of_the_moment(screen, program):
    screen.open(page_of(program, drive()))
    screen.run("document.getElementById('slider').focus()")
    press(screen, Keys.HOME)
    stamp = "%016x" % (drives.START * SECOND)
    sentences = fix(0, 48.1, 11.5, 0, 500, 6)[14:].decode().replace("\r\n", " ").strip()
    assert values(screen)["line"] == f"{stamp} 00000000  GPS         | {sentences}"


# ---- What is drawn


def column_has_line(screen, chart, milliseconds):
    """Whether the chart's line stands at this time, by the points of its picture."""
    return screen.run("""
        const [index, time] = arguments;
        const plot = document.querySelectorAll('.plot')[index];
        const chart = plot.chart;
        const area = chart.getArea();
        const canvas = [...plot.querySelectorAll('canvas')][0];
        const scale = canvas.width / parseFloat(canvas.style.width);
        const x = Math.round(chart.toDomXCoord(time) * scale);
        const points = canvas.getContext('2d').getImageData(x, 0, 1, (area.h - 3) * scale).data;
        const line = getComputedStyle(document.documentElement).getPropertyValue('--line').trim();
        const rgb = [1, 3, 5].map(i => parseInt(line.slice(i, i + 2), 16));
        for (let i = 0; i < points.length; i += 4) {
            if (points[i + 3] > 150 && rgb.every((c, k) => Math.abs(points[i + k] - c) < 40)) {
                return true;
            }
        }
        return false;""", chart, milliseconds)


def test_leaves_gaps_open(screen, program):
    data = b"".join(fix(i, 48.1 + i * 0.0001, 11.5, 20 + i % 7, 500 + i % 5)
                    for i in range(300) if i < 100 or i > 160)
    screen.open(page_of(program, data))
    for chart in range(4):
        assert column_has_line(screen, chart, (drives.START + 50) * 1000)
        assert not column_has_line(screen, chart, (drives.START + 130) * 1000)
        assert column_has_line(screen, chart, (drives.START + 250) * 1000)
    dashed = screen.run("return document.querySelector('#track .gap').getTotalLength()")
    whole = screen.run("return document.querySelector('#track').getBBox().height")
    assert dashed == pytest.approx(61 / 299 * 5600, rel=0.02), whole


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
    start, end = screen.run("""
        return ['start', 'end'].map(id => Number(document.getElementById(id).dataset.x));""")
    assert end - start == pytest.approx(8600, abs=2)
    assert screen.text("scale-length") == "500 m"
    assert screen.run("return document.querySelector('#track .gap')") is None


def test_shows_all_where_fixes_are_always_far_apart(screen, program):
    screen.open(page_of(program, b"".join(fix(i * 120) for i in range(60))))
    assert screen.text("shown") == "60 fixes"
    assert len(screen.driver.find_elements("css selector", "#parts option")) == 2


def test_begins_with_the_drive_where_a_receiver_reports_another_year(screen, program):
    years = 20 * 365 * 86400
    early = b"".join(fix(i - years, status="V", quality=0) for i in range(30))
    screen.open(page_of(program, early + drive()))
    begin, end = windows(screen)[0]
    assert begin == pytest.approx(drives.START * 1000, abs=5000)
    assert end == pytest.approx((drives.START + 299) * 1000, abs=5000)
    assert len(screen.driver.find_elements("css selector", "#parts option")) == 3
    press(screen, Keys.TAB)
    screen.run("document.getElementById('slider').focus()")
    press(screen, Keys.HOME)
    assert values(screen)["time"] == "2006-11-26 12:35:19 UTC"


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
            character if character.isprintable() or character in "\u2028\u2029\u202e"
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
                   "\u2028\u202e&lt;.trace"]
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
    screen.driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": True})
    try:
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
    finally:
        screen.driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": False})


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
    folder = pathlib.Path(__file__).resolve().parents[2] / "tools" / "report"
    script = (folder / "page.js").read_text()
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
    drawn = int(screen.run("return document.getElementById('slider').max")) + 1
    assert 2000 < drawn < 20000
    assert f"{drawn:,} of 6,047,400" in screen.text("over-time")
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
