"""The example programs of libvexstream do what they say."""
import functools
import operator
import pathlib
import socket
import subprocess

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DRIVE = (PROJECT / "examples" / "data" / "drive.nmea").read_bytes()
LEAST_ROOM = 65537  # of a ring


def run(program, *arguments, **options):
    return subprocess.run([program, *map(str, arguments)], capture_output=True, timeout=60,
                          check=False, **options)


def messages(trace):
    """The messages of a sound trace: (stamp, payload)."""
    found = []
    while trace:
        length = 2 + int.from_bytes(trace[:2], "big")
        assert 14 < length <= len(trace)
        found.append((int.from_bytes(trace[6:14], "big"), trace[14:length]))
        trace = trace[length:]
    return found


def sentence(content):
    return f"${content}*{functools.reduce(operator.xor, content.encode()):02X}\r\n"


def gsv(second, part):
    return sentence(f"GPGSV,2,{part},05,0{part},60,{second},40")


def recorded(examples, folder, log):
    """The trace that the logger makes of a log."""
    trace = folder / "ring.trace"
    result = run(examples / "ringLogger", LEAST_ROOM, trace, input=log)
    assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")
    return trace.read_bytes()


def test_the_ring_keeps_all_that_fits(examples, tmp_path):
    kept = messages(recorded(examples, tmp_path, DRIVE))
    payloads = b"".join(payload for _, payload in kept)
    for line in (b"$GPRMC", b"$GPGGA"):
        assert payloads.count(line) == DRIVE.count(line.replace(b"GP", b"GN")) + DRIVE.count(line)


def test_the_ring_keeps_every_gsv_of_an_epoch(examples, tmp_path):
    rmc = sentence("GPRMC,120000,A,4807.038,N,01131.000,E,,,170526,,,A")
    log = rmc + gsv(0, 1) + gsv(0, 2)
    kept = messages(recorded(examples, tmp_path, log.encode()))
    noon = 1_779_019_200 * 10**9  # 2026-05-17 at 12
    assert kept == [(noon, (gsv(0, 1) + rmc).encode()), (noon, gsv(0, 2).encode())]


def test_the_ring_drops_the_oldest_messages_whole(examples, tmp_path):
    log = "".join(sentence(f"GPRMC,{h:02}{m:02}{s:02},A,4807.038,N,01131.000,E,,,170526,,,A")
                  for h in range(2) for m in range(60) for s in range(60))
    trace = recorded(examples, tmp_path, log.encode())
    kept = messages(trace)
    length = 14 + len(kept[0][1])
    assert len(kept) == LEAST_ROOM // length
    assert b"".join(payload for _, payload in kept) == log.encode()[-len(kept) * (length - 14):]


def test_the_ring_refuses_room_for_less_than_a_message(examples, tmp_path):
    result = run(examples / "ringLogger", LEAST_ROOM - 1, tmp_path / "trace")
    assert result.returncode == 2
    assert result.stderr.startswith(b"Usage: ringLogger BYTES TRACE")
    assert not (tmp_path / "trace").exists()


def join(examples, pieces):
    """What the reader says of pieces that are sent to it, one after the other."""
    with socket.create_server(("127.0.0.1", 0)) as server:
        server.settimeout(60)
        port = server.getsockname()[1]
        with subprocess.Popen([examples / "joinStream", "127.0.0.1", str(port)],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as reader:
            connection, _ = server.accept()
            with connection:
                for piece in pieces:
                    connection.sendall(piece)
            output, errors = reader.communicate(timeout=60)
            return reader.returncode, output.decode(), errors.decode()


def test_a_stream_can_be_joined_within_a_message(examples, tmp_path):
    trace = recorded(examples, tmp_path, DRIVE)
    whole = len(messages(trace))
    rest = trace[37:]
    status, output, errors = join(examples, [rest[i:i + 1000] for i in range(0, len(rest), 1000)])
    assert status == 0
    assert output.count("\n") == whole - 1
    assert len(errors.splitlines()) == 1
    assert errors.split()[1:4] == ["bytes", "at", "0:"]


def test_a_stream_from_its_beginning_has_no_damage(examples, tmp_path):
    trace = recorded(examples, tmp_path, DRIVE)
    status, output, errors = join(examples, [trace])
    assert (status, output.count("\n"), errors) == (0, len(messages(trace)), "")


def test_each_message_is_printed_when_it_is_whole(examples, tmp_path):
    trace = recorded(examples, tmp_path, DRIVE)
    first = 2 + int.from_bytes(trace[:2], "big")
    with socket.create_server(("127.0.0.1", 0)) as server:
        server.settimeout(60)
        port = server.getsockname()[1]
        with subprocess.Popen([examples / "joinStream", "127.0.0.1", str(port)],
                              stdout=subprocess.PIPE) as reader:
            connection, _ = server.accept()
            with connection:
                connection.sendall(trace[:first])
                assert b" GPS " in reader.stdout.readline()  # while the sender goes on
            assert reader.stdout.read() == b""


def test_nobody_answers(examples):
    with socket.create_server(("127.0.0.1", 0)) as server:
        port = server.getsockname()[1]
    result = run(examples / "joinStream", "127.0.0.1", port)
    assert (result.returncode, result.stdout, result.stderr) == (1, b"", b"Nobody answers there.\n")


def convert(examples, folder, table):
    log, trace = folder / "out.nmea", folder / "out.trace"
    result = run(examples / "positionsToTrace", log, trace, input=table.encode())
    return result, log.read_bytes().decode(), messages(trace.read_bytes())


def test_positions_become_sentences_and_messages(examples, tmp_path):
    result, log, kept = convert(examples, tmp_path,
                                "2026-05-17T10:00:00Z,48.1173,11.5167,545.4\n"
                                "2026-05-17T10:00:01.25Z,-0.5,-179.999999999,-3\n")
    assert (result.returncode, result.stderr) == (0, b"")
    rmc = [sentence("GPRMC,100000,A,4807.0380,N,01131.0020,E,,,170526,,,A"),
           sentence("GPRMC,100001.25,A,0030.0000,S,18000.0000,W,,,170526,,,A")]
    gga = [sentence("GPGGA,100000,4807.0380,N,01131.0020,E,1,,,545.4,M,,M,,"),
           sentence("GPGGA,100001.25,0030.0000,S,18000.0000,W,1,,,-3.0,M,,M,,")]
    assert log == rmc[0] + gga[0] + rmc[1] + gga[1]
    ten = 1_779_012_000 * 10**9  # 2026-05-17 at 10
    assert kept == [(ten, (gga[0] + rmc[0]).encode()),
                    (ten + 1_250_000_000, (gga[1] + rmc[1]).encode())]


def test_a_line_that_is_no_position_costs_no_other(examples, tmp_path):
    sound = "2026-05-17T10:00:0%dZ,1,2,3\n"
    result, _, kept = convert(examples, tmp_path,
                              sound % 1 + "time,latitude,longitude,altitude\n" +
                              "2026-05-17T10:00:02Z,90.1,2,3\n" + sound % 3)
    assert result.returncode == 1
    assert result.stderr.decode() == ("No position: time,latitude,longitude,altitude\n"
                                      "No position: 2026-05-17T10:00:02Z,90.1,2,3\n")
    assert [stamp // 10**9 % 10 for stamp, _ in kept] == [1, 3]


def test_a_year_that_two_digits_do_not_tell_is_no_position(examples, tmp_path):
    line = "%s,1,2,3\n"
    times = ["1979-12-31T23:59:59Z", "1980-01-01", "2079-12-31T23:59:59.5Z", "2080-01-01"]
    result, _, kept = convert(examples, tmp_path, "".join(line % time for time in times))
    assert result.returncode == 1
    assert result.stderr.decode() == "".join("No position: " + line % times[i] for i in (0, 3))
    assert [stamp for stamp, _ in kept] == [
        315_532_800 * 10**9, 3_471_292_799 * 10**9 + 500_000_000]
