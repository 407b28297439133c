"""What vextrace export and info must say of a trace, in the plainest way: everything at once."""
import re
import struct

from model.recording import NONE, RIGHT, WRONG, checksum_at, clock_of, time_of, xor

GPS = 22
FIRST_DATED = 365 * 86400 * 10**9
USUAL = b"PN"
TALKERS = b"PNABIL"
PLACES = 16


def messages(trace):
    """(stamp, sentences in their order) of each GPS message of a sound trace."""
    found = []
    at = 0
    while at < len(trace):
        size, number, _, stamp = struct.unpack(">HHHQ", trace[at:at + 14])
        if number == GPS:
            lines = trace[at + 14:at + 2 + size].split(b"\n")[:-1]
            found.append((stamp, [line + b"\n" for line in lines]))
        at += 2 + size
    return found


# --- Verdicts


def bare(text):
    return text.rstrip(b"\n").rstrip(b"\r")


def letters_of(code):
    """The letters behind G that the talker of a sentence stored under this code may have had."""
    if not code.startswith(b"$GP"):
        return b""
    return TALKERS + (b"Q" if code[3:] in (b"GSV", b"GSA") else b"")


def as_sent(text):
    """The sentence with the talker that its checksum is right for; None where there is none."""
    line = bare(text)
    expected = checksum_at(line, len(line) - 3)
    candidates = [text] + [text[:2] + bytes([letter]) + text[3:] for letter in letters_of(text[:6])]
    fitting = [sent for sent in candidates if xor(bare(sent)[1:-3]) == expected]
    return fitting[0] if fitting else None


def verdict_of(text):
    line = bare(text)
    if len(line) <= 3 or checksum_at(line, len(line) - 3) is None:
        return NONE
    return RIGHT if as_sent(text) else WRONG


def with_verdicts(trace):
    """(stamp, sentences, their verdicts) of each GPS message. For RMC and GGA the talker goes on,
    for each of the places that they have among those with one stamp."""
    lasting, before = {}, {}
    place, stamp_before = {}, {}
    result = []
    for stamp, texts in messages(trace):
        verdicts = []
        for text in texts:
            code = text[:6]
            verdict = verdict_of(text)
            if code in (b"$GPRMC", b"$GPGGA"):
                again = code in place and stamp_before[code] == stamp
                place[code] = min(place[code] + 1, PLACES - 1) if again else 0
                stamp_before[code] = stamp
                key = code, place[code]
                if key not in lasting:
                    lasting[key] = lasting.get((code, place[code] - 1))
                talker = as_sent(text)[2:3] if verdict == RIGHT else None
                if talker and (talker == before.get(key) or (not lasting[key] and talker in USUAL)):
                    lasting[key] = talker
                if talker and lasting[key] not in (None, talker):
                    verdict = WRONG
                before[key] = talker
            verdicts.append(verdict)
        result.append((stamp, texts, verdicts))
    return result


def nmea(trace):
    """What an export of the sentences must be."""
    result = b""
    stamp_before = None
    for stamp, texts, verdicts in with_verdicts(trace):
        lines = [as_sent(text) if verdict == RIGHT else text for text, verdict in zip(texts, verdicts)]
        timed = [place for place, text in enumerate(texts) if time_of(text)]
        if timed and stamp != stamp_before:
            lines.insert(0, lines.pop(timed[0]))
        stamp_before = stamp
        result += b"".join(lines)
    return result


# --- Fixes


def number_of(text):
    return float(text) if re.fullmatch(r"[0-9]*\.?[0-9]*", text) and re.search(r"[0-9]", text) else None


def signed_number_of(text):
    number = number_of(text[1:] if text[:1] in ("-", "+") else text)
    return -number if number is not None and text[0] == "-" else number


def count_of(text):
    return int(text) if re.fullmatch(r"[0-9]+", text) and int(text) <= 999 else None


def at_most(limit, number):
    return number if number is not None and abs(number) <= limit else None


def coordinate_of(text, hemisphere, letters, limit):
    value = number_of(text)
    if value is None or hemisphere not in letters or len(hemisphere) != 1:
        return None
    degrees = int(text.split(".")[0] or "0") // 100
    minutes = value - 100 * degrees
    result = degrees + minutes / 60.0
    return None if minutes > 60 or result > limit else -result if hemisphere == letters[1] else result


def position_of(fields):
    latitude = coordinate_of(fields[0], fields[1], "NS", 90)
    longitude = coordinate_of(fields[2], fields[3], "EW", 180)
    return (None, None) if latitude is None or longitude is None else (latitude, longitude)


def fields_of(line):
    text = bare(line).decode("latin-1").split("*")[0]
    return text.split(",") + [""] * 20


NUMBERS = ["latitude_deg", "longitude_deg", "altitude_m", "speed_kmh", "course_deg", "satellites",
           "quality", "hdop"]


def row_of(stamp, texts, verdicts, unchecked=False):
    """What a table says of a message; None where it has neither RMC nor GGA. "uses" tells the
    sentences that the fix is made of, which may be none."""
    verdict = {text[:6]: verdict for text, verdict in zip(texts, verdicts)}
    held = {text[:6]: text for text in texts}
    both = [code for code in (b"$GPRMC", b"$GPGGA") if code in held]
    uses = [code for code in both if unchecked or verdict[code] != WRONG]
    if not both:
        return None
    row = dict.fromkeys(NUMBERS, None)
    row.update(stamp=stamp, uses=set(uses), valid=False, clock=None)
    if b"$GPGGA" in uses:
        use_gga(row, fields_of(held[b"$GPGGA"]))
    if b"$GPRMC" in uses:
        use_rmc(row, fields_of(held[b"$GPRMC"]))
    used = [verdict[code] for code in uses]
    row["checksum"] = WRONG if WRONG in used or not used else NONE if NONE in used else RIGHT
    return row


def use_gga(row, fields):
    row["clock"] = clock_of(fields[1].encode("latin-1"))
    row["latitude_deg"], row["longitude_deg"] = position_of(fields[2:6])
    row["quality"] = count_of(fields[6])
    row["satellites"] = count_of(fields[7])
    row["hdop"] = at_most(1e6, number_of(fields[8]))
    if fields[10] in ("", "M"):
        row["altitude_m"] = at_most(1e8, signed_number_of(fields[9]))
    row["valid"] = bool(row["quality"]) and row["latitude_deg"] is not None


def use_rmc(row, fields):
    row["clock"] = clock_of(fields[1].encode("latin-1"))
    row["latitude_deg"], row["longitude_deg"] = position_of(fields[3:7])
    knots = number_of(fields[7])
    row["speed_kmh"] = at_most(1e6, None if knots is None else knots * 1.852)
    row["course_deg"] = at_most(360, number_of(fields[8]))
    row["valid"] = fields[2].startswith("A") and row["latitude_deg"] is not None


def repeats(row, before):
    """Whether a fix says again what the one before said."""
    if before is None or row["stamp"] != before["stamp"] or row["clock"] is None:
        return False
    is_better = ((row["valid"] and not before["valid"])
                 or (before["checksum"] == WRONG and row["checksum"] != WRONG))
    return row["uses"] <= before["uses"] and row["clock"] == before["clock"] and not is_better


def fixes(trace, unchecked=False):
    """A row for each message with RMC or GGA, and whether it is "valid", "not_valid", "repeated" or
    with a "wrong_checksum"."""
    result = []
    before = None
    for stamp, texts, verdicts in with_verdicts(trace):
        row = row_of(stamp, texts, verdicts, unchecked)
        if row is None:
            continue
        if not row["uses"]:
            result.append(("wrong_checksum", row))
        elif repeats(row, before):
            result.append(("repeated", row))
        else:
            before = row
            result.append(("valid" if row["valid"] else "not_valid", row))
    return result


def table(trace, unchecked=False):
    """The rows of a table."""
    return [row for kind, row in fixes(trace, unchecked) if kind in ("valid", "not_valid")]


# --- The summary


def info(trace):
    """What the summary says of sentences and fixes."""
    found = with_verdicts(trace)
    verdicts = [verdict for _, _, all_of_one in found for verdict in all_of_one]
    kinds = [kind for kind, _ in fixes(trace)]
    stamps = [stamp for stamp, _, _ in found]
    dated = [stamp for stamp in stamps if stamp >= FIRST_DATED]
    times = dated or stamps
    valid = [row for kind, row in fixes(trace) if kind == "valid"]
    values = {name: [row[name] for row in valid if row[name] is not None] for name in NUMBERS}
    return {
        "count": len(verdicts),
        "wrong_checksum": verdicts.count(WRONG),
        "no_checksum": verdicts.count(NONE),
        "fixes": {kind: kinds.count(kind)
                  for kind in ("valid", "not_valid", "wrong_checksum", "repeated")},
        "first_ns": min(times, default=None),
        "last_ns": max(times, default=None),
        "without_date": len(stamps) - len(dated),
        "highest_speed_kmh": max(values["speed_kmh"], default=None),
        "altitude_m": {"lowest": min(values["altitude_m"], default=None),
                       "highest": max(values["altitude_m"], default=None)},
        "least_satellites": min((count for count in values["satellites"] if count <= 255), default=None),
    }
