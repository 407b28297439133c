"""What vextrace record must make of an input, in the plainest way: everything at once, nothing fast."""
import datetime
import functools
import operator
import struct

LONGEST = 65535 - 12
HALF_A_DAY = 12 * 3600 * 10**9
DAY = 86400 * 10**9
EPOCH = datetime.date(1970, 1, 1)
RIGHT, WRONG, NONE = "right", "wrong", "none"


def xor(data):
    return functools.reduce(operator.xor, data, 0)


def is_start(byte):
    return byte in b"$!"


def checksum_at(line, star):
    """The number behind the star; None where no "*hh" is there."""
    text = line[star + 1:star + 3]
    if line[star:star + 1] != b"*" or len(text) != 2 or not all(c in b"0123456789abcdefABCDEF" for c in text):
        return None
    return int(text, 16)


def checked_start(line, star, first):
    """Where the checked sentence begins that ends with the checksum behind the star."""
    expected = checksum_at(line, star)
    if expected is None:
        return None
    for start in range(star - 1, first - 1, -1):
        if line[start] in b"\r\0":
            return None
        if is_start(line[start]) and xor(line[start + 1:star]) == expected:
            return start if star + 3 - start + 1 <= LONGEST else None
    return None


def sentences_of_line(line, line_feed):
    """(offset, text, verdict) of each sentence; the line feed is there, or empty at the end of all."""
    found = []
    first = 0
    star = line.find(b"*")
    while star >= 0:
        start = checked_start(line, star, first)
        if start is None:
            star = line.find(b"*", star + 1)
            continue
        end = star + 3
        rest = line[end:]
        text = line[start:end]
        if line_feed and not rest.strip(b"\r") and len(text + rest) + 1 <= LONGEST:
            text += rest + line_feed
        found.append((start, text, RIGHT))
        first = end
        star = line.find(b"*", end)
    if found:
        return found
    printed = line.rstrip(b"\r")
    stands = (line and is_start(line[0]) and all(0x20 <= c < 0x7f for c in printed)
              and len(line) + 1 <= LONGEST and line != b"$G")
    if not stands:
        return []
    has_checksum = len(printed) > 3 and checksum_at(printed, len(printed) - 3) is not None
    return [(0, line + line_feed, WRONG if has_checksum else NONE)]


def sentences(data):
    """(offset, text, verdict) of each sentence of an input."""
    found = []
    offset = 0
    for line in data.split(b"\n"):
        line_feed = b"\n" if offset + len(line) < len(data) else b""
        found += [(offset + at, text, verdict) for at, text, verdict in sentences_of_line(line, line_feed)]
        offset += len(line) + 1
    return found


def fields(text):
    return text.rstrip(b"\n").rstrip(b"\r").split(b"*")[0].split(b",")


def kind(text):
    """b"RMC", say; None of proprietary sentences and others without a usual address."""
    address = fields(text)[0]
    return address[3:] if len(address) == 6 and address[:1] == b"$" and address[1:2] != b"P" else None


def digits(text, count=None):
    return all(c in b"0123456789" for c in text) and (len(text) == count if count else len(text) > 0)


def time_of(text):
    """(seconds of the day, digits of the fraction without zeros at the end) of a timed sentence."""
    if kind(text) not in (b"RMC", b"GGA", b"GNS", b"GLL", b"ZDA", b"GST", b"GBS"):
        return None
    index = 5 if kind(text) == b"GLL" else 1
    return clock_of((fields(text) + [b""] * 6)[index])


def clock_of(field):
    """The same of the field alone."""
    whole, point, fraction = field.partition(b".")
    if not digits(whole, 6) or (point and not digits(fraction)):
        return None
    hour, minute, second = int(whole[:2]), int(whole[2:4]), int(whole[4:])
    if hour > 23 or minute > 59 or (second > 59 and (hour, minute, second) != (23, 59, 60)):
        return None
    return hour * 3600 + minute * 60 + second, fraction.rstrip(b"0")


def day_of(year, month, day):
    try:
        days = (datetime.date(year, month, day) - EPOCH).days
    except ValueError:
        return None
    return days if 0 <= days < (2**64 // DAY) else None


def date_of(text):
    """Days since 1970 of an RMC or ZDA sentence with a valid date."""
    field = fields(text) + [b""] * 10
    if kind(text) == b"RMC" and digits(field[9], 6):
        year = int(field[9][4:])
        return day_of(year + (1900 if year >= 80 else 2000), int(field[9][2:4]), int(field[9][:2]))
    if (kind(text) == b"ZDA" and digits(field[2]) and len(field[2]) <= 2 and digits(field[3])
            and len(field[3]) <= 2 and digits(field[4], 4)):
        return day_of(int(field[4]), int(field[3]), int(field[2]))
    return None


def nanoseconds(time):
    return time[0] * 10**9 + int((time[1] + b"0" * 9)[:9])


def epochs(texts):
    """(time or None, sentences) of each epoch."""
    result = []
    for text in texts:
        time = time_of(text)
        if not result or (time is not None and result[-1][0] not in (None, time)):
            result.append([time, []])
        if time is not None:
            result[-1][0] = time
        result[-1][1].append(text)
    return result


def stored(text):
    text = text if text.endswith(b"\n") else text + b"\n"
    return text[:2] + b"P" + text[3:] if text.startswith(b"$G") else text


def messages(texts):
    """The sentences of an epoch by messages, each a dictionary of codes."""
    result = []
    places = {}
    for text in map(stored, texts):
        code = text[:6]
        place = places.get(code, -1) + 1
        while place < len(result) and sum(map(len, result[place].values())) + len(text) > LONGEST:
            place += 1
        if place == len(result):
            result.append({})
        result[place][code] = text
        places[code] = place
    return result


def serialised(stamp, held):
    payload = b"".join(held[code] for code in sorted(held))
    return struct.pack(">HHHQ", 12 + len(payload), 22, 0, stamp % 2**64) + payload


def trusted(found):
    """The places of the timed sentences that steer."""
    verdicts = [verdict for _, _, verdict in found]
    first_right = verdicts.index(RIGHT) if RIGHT in verdicts else len(found)
    return {place for place, (_, text, verdict) in enumerate(found)
            if time_of(text) and (verdict == RIGHT or place < first_right)}


def stamps(groups, steering, first_day):
    """The stamp of each epoch, steered by the sentences at these places."""
    result = []
    day, time_before, place = first_day, None, 0
    for time, texts in groups:
        own = [text for at, text in enumerate(texts, place) if at in steering]
        place += len(texts)
        dates = [date_of(text) for text in own if date_of(text) is not None]
        now = 0 if time is None else nanoseconds(time)
        is_next = time is not None and time_before is not None and time_before - now > HALF_A_DAY
        here = dates[0] if dates else day + is_next
        result.append((here if here < 2**64 // DAY else 0) * DAY + now)
        if own:
            day, time_before = here, now
    return result


def trace(data, first_day=0):
    """The bytes of the trace that a recording of the input gives."""
    found = sentences(data)
    groups = epochs([text for _, text, _ in found])
    return b"".join(serialised(stamp, held)
                    for (_, texts), stamp in zip(groups, stamps(groups, trusted(found), first_day))
                    for held in messages(texts))
