"""Made-up drives, as traces."""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tools"))

from traces import SECOND, message, sentence, utc  # noqa: E402, F401

START = utc("2026-11-21T12:35:19") // SECOND


def coordinate(degrees, digits, positive, negative):
    size = abs(degrees)
    return "%0*d%08.5f,%s" % (digits, int(size), (size - int(size)) * 60,
                              positive if degrees >= 0 else negative)


def clock(seconds):
    day = int(seconds) % 86400
    fraction = "%.3f" % (seconds % 1)
    return "%02d%02d%02d%s" % (day // 3600, day // 60 % 60, day % 60, fraction[1:])


def fix(seconds, latitude=48.1, longitude=11.5, knots=30.0, altitude=545.4, satellites=8,
        quality=1, status="A"):
    """A message with RMC and GGA, so many seconds after START."""
    time = clock(START + seconds)
    place = (coordinate(latitude, 2, "N", "S") + "," + coordinate(longitude, 3, "E", "W"))
    return message(
        int(round((START + seconds) * 1000)) * 1000000,
        sentence(f"GPRMC,{time},{status},{place},{knots:.3f},084.4,211126,,,A".encode()),
        sentence(f"GPGGA,{time},{place},{quality},{satellites:02d},0.9,{altitude:.1f},M,46.9,M,,"
                 .encode()))


def drive(seconds=300):
    """To the north-east, faster and faster, up and up."""
    return b"".join(fix(i, 48.1 + i * 0.0001, 11.5 + i * 0.0002, i / 4, 500 + i / 10, 6 + i // 100)
                    for i in range(seconds))
