"""vextrace report: what becomes of its arguments, of damage and of the output. What is on the page
is tested in a browser, by tests/report/test_report.py."""
import html
import json
import os
import pty
import re
import resource
import signal
import subprocess

import pytest

from traces import CAN, SECOND, message, other, sentence, utc

NOON = utc("1994-03-23T12:00:00")


def fix(seconds, knots=22.4):
    time = "%02d%02d%02d" % (12 + seconds // 3600, seconds // 60 % 60, seconds % 60)
    place = "4807.%03d,N,01131.000,E" % (seconds % 1000)
    return message(NOON + seconds * SECOND,
                   sentence(f"GPRMC,{time},A,{place},{knots:.1f},084.4,230394,,,A".encode()),
                   sentence(f"GPGGA,{time},{place},1,08,0.9,545.4,M,46.9,M,,".encode()))


def data_of(page):
    """What the page's script reads."""
    found = re.search(rb'<script type="application/json" id="data">(.*?)</script>', page, re.S)
    return json.loads(found[1])


def text_of(page):
    """The page without its scripts, style and tags."""
    body = re.sub(rb"<(script|style).*?</\1>", b"", page, flags=re.S)
    return html.unescape(re.sub(rb"<[^>]*>", b" ", body).decode())


def put(tmp_path, name, data):
    (tmp_path / name).write_bytes(data)
    return name


def test_writes_a_page_under_its_name_when_it_is_whole(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0) + fix(1))
    done = vextrace("report", "-o", "drive.html", "drive.trace")
    assert (done.returncode, done.stdout, done.stderr) == (0, b"", b"")
    page = (tmp_path / "drive.html").read_bytes()
    assert page.startswith(b"<!DOCTYPE html>") and page.endswith(b"</html>\n")
    assert sorted(os.listdir(tmp_path)) == ["drive.html", "drive.trace"]
    assert vextrace("report", "drive.trace").stdout == page
    assert vextrace("report", "-o", "-", "-", input=fix(0) + fix(1)).stdout == page.replace(
        b"drive.trace", b"standard input")


def facts_of(page):
    """The numbers of the page's head: name to value and detail."""
    return {name: (html.unescape(value), html.unescape(detail)) for name, value, detail in re.findall(
        r"<li[^>]*><span>(.*?)</span><b>(.*?)</b>(?:<small>(.*?)</small>)?</li>", page.decode())}


def rows_of(page):
    """The table of sentences."""
    return [[html.unescape(cell) for cell in re.findall(r"<t[hd][^>]*>(.*?)</t[hd]>", row)]
            for row in re.findall(r"<tr>(.*?)</tr>", page.decode())[1:]]


def grouped(number):
    return f"{number:,}"


def distance(metres):
    return f"{metres:.0f} m" if metres < 999.5 else f"{metres / 1000:.2f} km"


def lasting(seconds):
    """The seconds of a text such as "1 h 02 min 03 s"."""
    units = {"d": 86400, "h": 3600, "min": 60, "s": 1}
    words = seconds.split(" ")
    return sum(float(number) * units[unit] for number, unit in zip(words[::2], words[1::2]))


def expect_what_info_says(vextrace, *traces):
    infos = json.loads(vextrace("info", "--json", *traces).stdout)
    info = infos["all"]
    page = vextrace("report", *traces).stdout
    facts = facts_of(page)
    across = info["distance_across_gaps_m"]
    assert facts["Distance"] == (distance(info["distance_m"]),
                                 f"{distance(across)} more across gaps" if across else "")
    speed = info["highest_speed_kmh"]
    assert facts["Highest speed"][0] == ("none" if speed is None else f"{speed:.1f} km/h")
    low, high = info["altitude_m"]["lowest"], info["altitude_m"]["highest"]
    assert facts["Altitude"][0] == (
        "none" if low is None else f"{low:.1f} m" if f"{low:.1f}" == f"{high:.1f}"
        else f"{low:.1f} to {high:.1f} m")
    satellites = info["satellites"]
    if satellites["least"] is None:
        assert facts["Satellites"] == ("none", "")
    else:
        span = sorted({satellites["least"], satellites["most"]})
        assert facts["Satellites"] == (" to ".join(map(str, span)), "median %g" % satellites["median"])
    fixes = info["fixes"]
    wrong = fixes["wrong_checksum"]
    assert facts["Fixes"] == (
        grouped(fixes["valid"] + fixes["not_valid"]),
        f"{fixes['valid']:,} valid, {fixes['not_valid']:,} not" +
        (f"; {wrong} more with a wrong checksum" if wrong else ""))
    assert facts["Messages"] == (grouped(info["messages"]["gps"]),
                                 grouped(info["messages"]["other"]) + " of other types")
    sentences = info["sentences"]
    assert facts["Sentences"][0] == grouped(sentences["count"])
    if sentences["wrong_checksum"] or sentences["no_checksum"]:
        assert facts["Sentences"][1] == (f"{sentences['wrong_checksum']:,} with a wrong checksum, "
                                         f"{sentences['no_checksum']:,} with none")
    assert [(row[0], row[1]) for row in rows_of(page)] == [
        (code, grouped(count)) for code, count in sentences["by_code"].items()]
    time = info["time"]
    if time["first_ns"] is None:
        assert facts["Duration"] == ("none", "")
        return
    begin, end = (time[name].replace("T", " ").removesuffix("Z") for name in ["first", "last"])
    if time["last_ns"] >= 365 * 86400 * SECOND:
        assert (f"<p>{begin} to {end} UTC</p>" if begin[:10] != end[:10]
                else f"<p>{begin} to {end[11:]} UTC</p>") in page.decode()
    times = [each["time"] for each in infos["files"] if each["time"]["first_ns"] is not None]
    assert lasting(facts["Duration"][0]) == pytest.approx(
        sum(each["last_ns"] - each["first_ns"] for each in times) / SECOND, abs=0.51)
    gaps = facts["Duration"][1].split("; ")
    if len(traces) > 1:
        assert gaps.pop(0) == f"sum of {len(traces)} drives"
    assert gaps[0].split(" ")[0] == (
        grouped(info["gaps"]["count"]) if info["gaps"]["count"] else "no")
    if info["gaps"]["count"]:
        assert lasting(gaps[0].split("longest ")[1]) == pytest.approx(info["gaps"]["longest_s"],
                                                                      abs=0.51)


def test_says_what_info_says(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0) + fix(1) + fix(62, 50) + other(CAN, 0, b"abc")
        + message(NOON + 63 * SECOND, b"$GPRMC,1*00\r\n"))
    put(tmp_path, "later.trace", b"".join(fix(i, i / 10) for i in range(4000, 5500)))
    put(tmp_path, "undated.trace", message(7 * SECOND, sentence(b"GPTXT,hello")))
    put(tmp_path, "empty.trace", b"")
    expect_what_info_says(vextrace, "drive.trace")
    expect_what_info_says(vextrace, "drive.trace", "later.trace", "undated.trace")
    expect_what_info_says(vextrace, "undated.trace")
    expect_what_info_says(vextrace, "empty.trace")


def test_says_of_a_log_what_info_says(vextrace, tmp_path, log):
    assert vextrace("record", "-o", "log.trace", log).returncode == 0
    expect_what_info_says(vextrace, "log.trace")


def test_tells_damage_and_goes_on_behind_it(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0) + b"\xff" * 20 + fix(1))
    done = vextrace("report", "-o", "drive.html", "drive.trace")
    assert done.returncode == 1
    assert done.stderr.startswith(b"vextrace: drive.trace: damaged at byte 146, 20 bytes passed")
    page = (tmp_path / "drive.html").read_bytes()
    assert "drive.trace is damaged at byte 146: " in text_of(page)
    assert "20 bytes passed over." in text_of(page)
    assert len(data_of(page)["steps"]) == 2


def test_writes_no_page_of_what_is_no_trace(vextrace, tmp_path):
    put(tmp_path, "log.nmea", b"$GPRMC,123519,A*00\r\n" * 100)
    done = vextrace("report", "-o", "drive.html", "log.nmea")
    assert done.returncode == 1
    assert done.stderr.startswith(b"vextrace: log.nmea: no trace: ")
    assert os.listdir(tmp_path) == ["log.nmea"]


def drives_of(page):
    """The list of drives."""
    return [html.unescape(re.sub(r"<[^>]*>", "", entry)) for entry in re.findall(
        r'<li><span class="swatch d\d p\d"></span>(.*?)</li>', page.decode())]


def test_takes_each_trace_for_a_drive(vextrace, tmp_path):
    names = [put(tmp_path, f"{i}.trace", fix(10 * i) + fix(10 * i + 1)) for i in (2, 0, 1)]
    page = vextrace("report", *names).stdout
    data = data_of(page)
    assert [(drive["name"], drive["count"], drive["first"]) for drive in data["drives"]] == [
        (f"{i}.trace", 2, str(NOON + 10 * i * SECOND)) for i in (2, 0, 1)]
    assert data["message"] == [1, 2] * 3
    assert data["steps"] == [0, 1] * 3 and data["unit"] == str(SECOND)
    assert data["breaks"] == []
    # 1/1000 minute of latitude and a second each.
    assert drives_of(page) == [
        f"{n}: {i}.trace 1994-03-23 12:00:{10 * i:02} to 12:00:{10 * i + 1:02} UTC, 1 s, 2 m, "
        "start in an online map" for n, i in [(1, 2), (2, 0), (3, 1)]]


def test_names_the_time_between_drives_and_counts_it_nowhere(vextrace, tmp_path):
    put(tmp_path, "a.trace", b"".join(fix(i) for i in range(11)))
    put(tmp_path, "b.trace", b"".join(fix(i) for i in range(3600, 3611)))
    facts = facts_of(vextrace("report", "a.trace", "b.trace").stdout)
    assert facts["Duration"] == ("20 s", "sum of 2 drives; no gap over 5 s between messages; "
                                 "59 min 50 s between the drives")
    assert facts["Moving"] == ("20 s", "2 km/h or more")
    # Even where the gap is allowed.
    facts = facts_of(vextrace("report", "--gap", "100000", "a.trace", "b.trace").stdout)
    assert facts["Moving"] == ("20 s", "2 km/h or more")


def undated(seconds):
    """As of a receiver that has not learnt the date: the stamp is a time of day."""
    time = "0000%02d" % seconds
    return message(seconds * SECOND, sentence(
        f"GPRMC,{time},A,4807.{seconds:03},N,01131.000,E,022.4,084.4,,,,A".encode()))


def test_takes_traces_without_a_date(vextrace, tmp_path):
    put(tmp_path, "a.trace", b"".join(undated(i) for i in range(1, 7)))
    put(tmp_path, "b.trace", b"".join(undated(i) for i in range(31, 37)))
    page = vextrace("report", "--gap", "100", "a.trace", "b.trace").stdout
    facts = facts_of(page)
    assert facts["Duration"][0] == "10 s" and facts["Moving"][0] == "10 s"
    assert "No date is known." in text_of(page) and "1970" not in text_of(page).replace(
        "12 messages have no date: their times count from 1970-01-01.", "")
    assert drives_of(page)[1] == "2: b.trace no date, 5 s, 9 m, start in an online map"
    assert "12 messages have no date" in text_of(page)
    data = data_of(page)
    assert [drive["first"] for drive in data["drives"]] == [str(SECOND), str(31 * SECOND)]
    assert data["steps"] == [0, 1, 1, 1, 1, 1] * 2 and data["breaks"] == []


def test_draws_a_hundred_drives_and_tells_of_more(vextrace, tmp_path):
    names = [put(tmp_path, f"{i}.trace", fix(i)) for i in range(102)]
    page = vextrace("report", *names).stdout
    assert len(drives_of(page)) == len(data_of(page)["drives"]) == 100
    assert facts_of(page)["Fixes"][0] == "102"
    assert ("The first 100 of 102 drives are drawn; the numbers are those of all. 100 of the 102 "
            "fixes are drawn") in text_of(page)
    assert "are drawn; the numbers" not in text_of(vextrace("report", *names[:100]).stdout)


def test_tells_the_number_of_fixes_once(vextrace, tmp_path):
    invalid = message(NOON, sentence(b"GPRMC,120000,V,,,,,,,230394,,,N"))
    same = [message(NOON, sentence(
        f"GPRMC,12000{i},A,4807.038,N,01131.000,E,{i},084.4,230394,,,A".encode())) for i in (7, 8, 9)]
    put(tmp_path, "drive.trace", fix(0) + b"".join(same) + invalid)
    page = vextrace("report", "drive.trace").stdout
    assert facts_of(page)["Fixes"] == ("5", "4 valid, 1 not")
    assert "All 5 fixes are drawn." in text_of(page) and len(data_of(page)["steps"]) == 5
    put(tmp_path, "long.trace", b"".join(fix(i, i % 90) for i in range(9000)))
    page = vextrace("report", "long.trace").stdout
    drawn = len(data_of(page)["steps"])
    assert 2000 < drawn < 9000
    assert (f"{drawn:,} of the 9,000 fixes are drawn, and with them every peak and every gap that a "
            "screen can show; ") in text_of(page)
    assert re.findall(r"(\d\S*) fix", text_of(page)) == ["9,000"]


@pytest.mark.parametrize("way", ["pipe", "file", "fifo"])
def test_reads_what_can_be_read_once(vextrace, tmp_path, way):
    trace = b"".join(fix(i) for i in range(2000)) + b"\xff" * 9
    put(tmp_path, "a.trace", trace)
    folder = tmp_path / "temporary"
    folder.mkdir()
    environment = {**os.environ, "TMPDIR": str(folder)}
    name = "standard input"
    if way == "pipe":
        done = vextrace("report", "-", input=trace, env=environment)
    elif way == "file":
        with open(tmp_path / "a.trace", "rb") as file:
            done = vextrace("report", "-", stdin=file, env=environment)
    else:
        name = "fifo"
        os.mkfifo(tmp_path / name)
        with subprocess.Popen(["sh", "-c", "cat a.trace > fifo"], cwd=tmp_path):
            done = vextrace("report", name, env=environment)
    assert done.returncode == 1
    assert done.stdout.replace(name.encode(), b"a.trace") == vextrace("report", "a.trace").stdout
    assert os.listdir(folder) == []


def test_tells_where_there_is_no_room_for_what_is_read_once(vextrace, tmp_path):
    environment = {**os.environ, "TMPDIR": str(tmp_path)}

    def limit_files():
        resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)

    done = vextrace("report", "-o", "drive.html", "-", input=b"".join(map(fix, range(3000))),
                    env=environment, preexec_fn=limit_files)
    assert done.returncode == 1
    assert done.stderr.decode() == (
        f"vextrace: standard input: cannot be kept in a temporary file in {tmp_path}: "
        "File too large\n")
    assert os.listdir(tmp_path) == []


def test_draws_what_was_there_when_it_was_counted(vextrace, tmp_path):
    """The first trace grows while the second is awaited, between its two readings."""
    trace = b"".join(fix(i) for i in range(100))
    put(tmp_path, "grown.trace", trace)
    os.mkfifo(tmp_path / "fifo")
    with subprocess.Popen([vextrace.program, "report", "grown.trace", "fifo"], cwd=tmp_path,
                          stdout=subprocess.PIPE) as reporter:
        with open(tmp_path / "fifo", "wb") as second, open(tmp_path / "grown.trace", "ab") as first:
            second.write(trace)
            first.write(trace)
        page = reporter.stdout.read()
    assert [drive["count"] for drive in data_of(page)["drives"]] == [100, 100]


def test_numbers_messages_as_show_does(vextrace, tmp_path):
    put(tmp_path, "drive.trace", other(CAN, 0, b"") + fix(0) + other(CAN, 0, b"") + b"\xff" * 20
        + fix(1))
    shown = vextrace("show", "--number", "drive.trace").stdout.decode().splitlines()
    data = data_of(vextrace("report", "drive.trace").stdout)
    assert data["message"] == [int(line.split(" ")[0]) for line in shown] == [2, 4]


def test_shows_a_part_of_the_time(vextrace, tmp_path):
    put(tmp_path, "drive.trace", b"".join(fix(i) for i in range(10)))
    page = vextrace("report", "--from", "1994-03-23T12:00:03", "--until", "1994-03-23T12:00:05Z",
                    "drive.trace").stdout
    assert data_of(page)["drives"][0]["first"] == str(NOON + 3 * SECOND)
    assert len(data_of(page)["steps"]) == 3
    assert ("Only a part of the time was asked for, from 1994-03-23 12:00:03 UTC, up to 1994-03-23 "
            "12:00:05 UTC.") in text_of(page)


def test_leaves_lines_open_behind_a_gap_of_any_length(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0) + fix(10))
    assert data_of(vextrace("report", "drive.trace").stdout)["breaks"] == [[1, 63]]
    assert data_of(vextrace("report", "--gap", "10", "drive.trace").stdout)["breaks"] == []


def test_leaves_fixes_with_a_wrong_checksum_out(vextrace, tmp_path):
    wrong = fix(1).replace(b",084.4,", b",084.5,").replace(b",08,", b",09,")
    put(tmp_path, "drive.trace", fix(0) + wrong + fix(2))
    page = vextrace("report", "drive.trace").stdout
    assert data_of(page)["steps"] == [0, 1] and data_of(page)["unit"] == str(2 * SECOND)
    assert "1 fix is left out of the track, the charts and the numbers" in text_of(page)


def test_a_sentence_with_a_wrong_checksum_takes_no_right_one_along(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0) + fix(1).replace(b",084.4,", b",084.5,") + fix(2))
    data = data_of(vextrace("report", "drive.trace").stdout)
    assert data["steps"] == [0, 1, 1]
    assert data["course"][1] is None and data["altitude"][1] is not None


@pytest.mark.parametrize("arguments, reason", [
    (["missing"], b"missing: cannot be read: No such file or directory"),
    (["."], b".: is a directory"),
    (["-o", "old.html", "drive.trace"], b"old.html: exists"),
    (["-o", "drive.trace", "--force", "drive.trace"], b"drive.trace: "),
    (["-o", "link", "--force", "drive.trace"], b"link: "),
    (["-o", "no/such/folder", "drive.trace"], b"no/such/folder: "),
    (["--gap", "0", "drive.trace"], b"--gap: takes a number of seconds greater than 0"),
    (["--gap", "nan", "drive.trace"], b"--gap: "),
    (["--from", "noon", "drive.trace"], b"--from: noon is no time such as"),
    (["--from", "2026-01-02", "--until", "2026-01-01", "drive.trace"],
     b"--from: is later than --until"),
    ([], b"TRACE is required"),
])
def test_refuses_what_cannot_be_done(vextrace, tmp_path, arguments, reason):
    put(tmp_path, "drive.trace", fix(0))
    put(tmp_path, "old.html", b"old")
    os.symlink("drive.trace", tmp_path / "link")
    before = {name: (tmp_path / name).read_bytes() for name in os.listdir(tmp_path)}
    done = vextrace("report", *arguments)
    assert done.returncode == 2 and done.stdout == b""
    assert done.stderr.startswith(b"vextrace: " + reason) and done.stderr.count(b"\n") == 1
    assert {name: (tmp_path / name).read_bytes() for name in os.listdir(tmp_path)} == before


def test_writes_no_page_to_a_terminal(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0))
    main, terminal = pty.openpty()
    done = subprocess.run([vextrace.program, "report", "drive.trace"], stdout=terminal,
                          stderr=subprocess.PIPE, cwd=tmp_path, check=False)
    os.close(terminal)
    os.close(main)
    assert done.returncode == 2
    assert done.stderr.startswith(b"vextrace: -o: name a file for the page")


def test_tells_a_full_device(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0))
    with open("/dev/full", "wb") as full:
        done = subprocess.run([vextrace.program, "report", "drive.trace"], stdout=full,
                              stderr=subprocess.PIPE, cwd=tmp_path, check=False)
    assert done.returncode == 1 and b"No space left on device" in done.stderr


def test_replaces_a_page_when_asked_to(vextrace, tmp_path):
    put(tmp_path, "drive.trace", fix(0))
    put(tmp_path, "drive.html", b"old")
    assert vextrace("report", "--force", "-o", "drive.html", "drive.trace").returncode == 0
    assert (tmp_path / "drive.html").read_bytes().startswith(b"<!DOCTYPE html>")


def test_leaves_no_markup_of_a_trace_on_the_page(vextrace, tmp_path):
    hostile = b"</script><script>alert(1)</script><!--]]>&\"'\x01\xff"
    name = "<u>&\"'.trace"
    put(tmp_path, name, message(NOON, b"$GPRMC,120000,A,4807.038,N,01131.000,E,,,230394,," + hostile,
                                b"$<i>\"&," + hostile))
    page = vextrace("report", name).stdout
    assert page.count(b"<script") == 3 and page.count(b"</script>") == 3
    for tag in [b"<u>&", b"<i>", b"<!--]", b"\x01", b"\xff"]:
        assert tag not in page
    assert name in text_of(page) and "$<i>\"&" in text_of(page)


@pytest.mark.memory
def test_keeps_within_its_bytes_whatever_comes(vextrace, tmp_path):
    # Long sentences that do not recur, many codes, many traces with long names, much damage.
    names = []
    for trace in range(300):
        data = b""
        for i in range(20):
            number = trace * 20 + i
            noise = "".join("%x" % (number * k * 2654435761 % 2**32) for k in range(1, 400))
            data += message(NOON + number * SECOND, sentence(
                b"GPRMC,120000,A,4807.%03d,N,01131.000,E,%d,,230394,," % (number % 1000, number % 200)
                + noise.encode()), b"$X%04d,<<<<&&&&\"\"\"\"\r\n" % number)
        names.append(put(tmp_path, "%03d" % trace + "n" * 200, data + b"\xff" * 50))

    def limit_memory():
        resource.setrlimit(resource.RLIMIT_AS, (512 << 20, 512 << 20))

    done = vextrace("report", "-o", "drive.html", *names, preexec_fn=limit_memory)
    assert done.returncode == 1
    page = (tmp_path / "drive.html").read_bytes()
    assert 500_000 < len(page) < 2_000_000
    assert len(data_of(page)["steps"]) > 200
    assert "There are 290 more damaged places." in text_of(page)
    assert "of further codes." in text_of(page)
    assert " and 280 more" in text_of(page)


def test_is_the_same_page_every_time(vextrace, tmp_path):
    put(tmp_path, "drive.trace", b"".join(fix(i) for i in range(100)))
    environment = {**os.environ, "LC_ALL": "de_DE.UTF-8", "TZ": "Asia/Tokyo"}
    assert vextrace("report", "drive.trace").stdout == vextrace(
        "report", "drive.trace", env=environment).stdout


def test_shows_an_example_in_its_help(vextrace):
    done = vextrace("report", "--help")
    assert done.returncode == 0
    assert b"Example: vextrace report -o drive.html drive.trace" in done.stdout
