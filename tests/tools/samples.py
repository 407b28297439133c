"""Small traces, and what the program says of them."""
from traces import GPS, other, sentence

# What a GPS message's trace line shows between its header and its sentences.
COLUMN = b" 00000000  GPS         |"

GGA = b"$GPGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*69\r\n"
RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*07\r\n"
STAMP = 764426119 * 10**9  # 1994-03-23T12:35:19Z


def message(stamp, payload, number=GPS):
    """A message whose payload need not be as the library writes it."""
    return other(number, stamp, payload)


FIRST = message(STAMP, b"!AIVDM,1\n" + GGA + RMC)
SECOND = message(STAMP + 1_500_000_000,
                 b"$GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00\n$PXYZ\n")
SMALL = FIRST + SECOND
CAN = message(STAMP, b"\x01\xff", number=1)

FIRST_LINE = (b"0a9bc98150068600" + COLUMN + b" !AIVDM,1 " + GGA.strip() + b" " + RMC.strip() +
              b"\n")
SECOND_LINE = (b"0a9bc981a96eb500" + COLUMN +
               b" $GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00 $PXYZ\n")


def fix(stamp, latitude=b"4807.038,N", longitude=b"01131.000,E", satellites=8, knots=b"022.4",
        status=b"A", altitude=b"545.4"):
    """A message with RMC and GGA whose checksums are right."""
    gga = b"GPGGA,123519,%s,%s,1,%02d,0.9,%s,M,46.9,M,," % (latitude, longitude, satellites,
                                                              altitude)
    rmc = b"GPRMC,123519,%s,%s,%s,%s,084.4,230394,,,A" % (status, latitude, longitude, knots)
    return message(stamp, sentence(gga) + sentence(rmc))


def changes(trace, everything):
    """Traces with one byte changed: to every other value, or to one that differs in many bits."""
    for i, byte in enumerate(trace):
        values = range(256) if everything else [byte ^ 0x55]
        for value in values:
            if value != byte:
                yield i, trace[:i] + bytes([value]) + trace[i + 1:]
