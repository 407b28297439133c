#!/usr/bin/env bash
# Checks the example programs from end to end.
# Usage: examples.sh BUILD_DIR SOURCE_DIR [LOG_DIR]
#   LOG_DIR  a folder of receiver logs (*.nmea) to check beside the project's own log
# shellcheck disable=SC2016,SC2059 # sentences begin with "$"; texts are given as printf formats
set -uo pipefail
programs=$(cd "$1" && pwd)/examples
source_dir=$(cd "$2" && pwd)
logs=("$source_dir/examples/data/drive.nmea")
if [ -n "${3-}" ]; then
    logs+=("$3"/*.nmea)
fi
PATH=$programs:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

passed=0
failed=0
tracks=0
mkdir tracks

pass() { passed=$((passed + 1)); }

fail() {
    failed=$((failed + 1))
    printf 'FAILED: %s\n' "$@" >&2
}

# equal NAME EXPECTED ACTUAL
equal() {
    if [ "$2" = "$3" ]; then pass; else fail "$1" "expected: $2" "     got: $3"; fi
}

# equal_files NAME EXPECTED ACTUAL
equal_files() {
    if cmp -s "$2" "$3"; then pass; else fail "$1" "$(diff -a "$2" "$3" | cat -v | head -20)"; fi
}

# succeeds NAME COMMAND...: exit status 0 and silence on standard error; the output is in ./out.
succeeds() {
    local name=$1 status=0
    shift
    "$@" >out 2>err || status=$?
    if [ $status -eq 0 ] && [ ! -s err ]; then pass; else fail "$name" "status $status" "$(cat err)"; fi
}

# refuses STATUS TEXT COMMAND...: that exit status and one line on standard error that begins with
# the program's name and holds the text. The output is in ./out, unless $output names another file
# or says "closed".
refuses() {
    local expected=$1 text=$2 status=0
    shift 2
    if [ "${output-}" = closed ]; then
        "$@" >&- 2>err || status=$?
    else
        "$@" >"${output-out}" 2>err || status=$?
    fi
    if [ $status -eq "$expected" ] && [ "$(wc -l <err)" -eq 1 ] && grep -q -a -e "^$1: " err &&
        grep -q -a -F -e "$text" err; then
        pass
    else
        fail "$* should end with $expected and: $text" "status $status" "$(cat err)"
    fi
}

# message SIZE STAMP PAYLOAD: a serialised message; size and time stamp as hexadecimal digits,
# the payload as printf takes it.
message() {
    printf "$(printf '%s' "${1}00160000$2" | sed 's/../\\x&/g')"
    printf "$3"
}

# record LOG: makes ./trace from the log, written as printf takes it.
record() {
    printf "$1" >log
    nmea2trace log trace >out || fail "nmea2trace refuses: $1"
}

# grouped LOG EXPECTED: the expected sentences, each behind a blank, one line per message.
grouped() {
    record "$1"
    equal "messages of $1" "$2" "$(traceview trace | cut -d '|' -f 2-)"
}

# stamped LOG EXPECTED: the expected time stamps, in hexadecimal, one line per message.
stamped() {
    record "$1"
    equal "time stamps of $1" "$2" "$(traceview trace | cut -d ' ' -f 1)"
}

# seconds UTC: the time stamp of a whole second.
seconds() {
    printf '%016x' "$(($(date -u -d "$1" +%s) * 1000000000))"
}

# valid_gpx FILE: checked with all others at the end.
valid_gpx() {
    cp "$1" "tracks/$((++tracks)).gpx"
}

# track LOG: the points that trace2gpx makes of it, without blanks, checked against the schema.
track() {
    record "$1"
    trace2gpx trace >track.gpx
    valid_gpx track.gpx
    track=$(sed -n '/<trkseg>/,/<\/trkseg>/p' track.gpx | sed -e '1d' -e '$d' -e 's/^ *//' | tr -d '\n')
}

#--- A small log, from end to end

small_log='noise\n$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*6A\r\n'
small_log+='$GNGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n!AIVDM,1\n'
small_log+='$GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00\n$PXYZ'

record "$small_log"
cp log small.nmea
cp trace small.trace
equal 'nmea2trace counts' \
    '6 lines read, 1 skipped, 5 sentences stored, 2 messages, 240 bytes' "$(cat out)"

{
    message 00a3 0a9bc98150068600 \
        '!AIVDM,1\n$GPGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*6A\r\n'
    message 0049 0a9bc981a96eb500 \
        '$GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00\n$PXYZ\n'
} >expected
equal_files 'the trace file, byte by byte' expected small.trace

nmea2trace - piped.trace <small.nmea >/dev/null
equal_files 'a log from standard input' small.trace piped.trace

cat >expected <<'END'
0a9bc98150068600 00000000  GPS         | !AIVDM,1 $GPGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47 $GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*6A
0a9bc981a96eb500 00000000  GPS         | $GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00 $PXYZ
END
succeeds 'traceview' traceview small.trace
equal_files 'trace lines' expected out
cp out small.lines

cat >expected <<'END'
RMC
1. UTC time = 123519
2. Status = A
3. Latitude = 4807.038
4. Latitude hemisphere = N
5. Longitude = 01131.000
6. Longitude hemisphere = E
7. Speed = 022.4
8. Course = 084.4
9. UTC date = 230394
10. Magnetic = 003.1
11. Magnetic direction = W
12. Mode indicator = A
GGA
1. UTC time = 123519.00
2. Latitude = 4807.038
3. Latitude hemisphere = N
4. Longitude = 01131.000
5. Longitude hemisphere = E
6. GPS quality indicator = 1
7. Number of satellites = 08
8. Horizontal delution = 0.9
9. Altitude = 545.4
10. Altitude unit = M
11. Geodial separation = 46.9
12. Geodial unit = M
13. Age GPS data = 
14. Reference id = 
RMC: time 123519, date 230394, valid, latitude 48.1173000000 deg, longitude 11.5166666667 deg, speed 41.484800 km/h, course 84.4000 deg
GGA: time 123519, quality 1, latitude 48.1173000000 deg, longitude 11.5166666667 deg, 8 satellites, altitude 545.4000 m
48°7.038 N, 11°31.000 E, 545.4M
RMC
1. UTC time = 123520.5
2. Status = A
3. Latitude = 3854.51
4. Latitude hemisphere = S
5. Longitude = 07726.45
6. Longitude hemisphere = W
7. Speed = 
8. Course = 
9. UTC date = 230394
10. Magnetic = 
11. Magnetic direction = 
12. Mode indicator = N
RMC: time 123520, date 230394, valid, latitude -38.9085000000 deg, longitude -77.4408333333 deg, speed 0.000000 km/h, course 0.0000 deg
38°54.510 S, 77°26.450 W
END
succeeds 'traceview, three views' traceview --rdb --fix --fields small.trace
equal_files 'fields, numbers and RDB text' expected out

cat >expected <<'END'
0000  00 49 00 16 00 00 0a 9b c9 81 a9 6e b5 00 24 47  .I.........n..$G
0010  50 52 4d 43 2c 31 32 33 35 32 30 2e 35 2c 41 2c  PRMC,123520.5,A,
0020  33 38 35 34 2e 35 31 2c 53 2c 30 37 37 32 36 2e  3854.51,S,07726.
0030  34 35 2c 57 2c 2c 2c 32 33 30 33 39 34 2c 2c 2c  45,W,,,230394,,,
0040  4e 2a 30 30 0a 24 50 58 59 5a 0a                 N*00.$PXYZ.
END
tail -c 75 small.trace >second.trace
succeeds 'traceview --hex' traceview --hex second.trace
equal_files 'bytes in hexadecimal' expected out

cat >expected <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="trace2gpx" xmlns="http://www.topografix.com/GPX/1/1">
  <trk>
    <trkseg>
      <trkpt lat="48.1173000000" lon="11.5166666667">
        <ele>545.400</ele>
        <time>1994-03-23T12:35:19Z</time>
      </trkpt>
      <trkpt lat="-38.9085000000" lon="-77.4408333333">
        <time>1994-03-23T12:35:20.5Z</time>
      </trkpt>
    </trkseg>
  </trk>
</gpx>
END
succeeds 'trace2gpx' trace2gpx small.trace
equal_files 'the track' expected out
cp out small.gpx

cat >expected <<'END'
2 messages written again: the same 240 bytes as in the file
5 sentences compared: the same as in the log
2 time stamps compared: the same as the sentences say
END
succeeds 'checkTrace' checkTrace small.nmea small.trace
equal_files 'the proof' expected out

mkdir locales
localedef -i de_DE -f UTF-8 locales/de_DE.UTF-8 >localedef.log 2>&1 || cat localedef.log
LOCPATH=$work/locales LC_ALL=de_DE.UTF-8 traceview --fix second.trace >out
equal 'numbers do not follow the locale' \
    'RMC: time 123520, date 230394, valid, latitude -38.9085000000 deg, longitude -77.4408333333 deg, speed 0.000000 km/h, course 0.0000 deg' \
    "$(cat out)"

traceview - <small.trace >out
equal_files 'a trace from standard input' small.lines out
trace2gpx - <small.trace >out
equal_files 'a track from standard input' small.gpx out
checkTrace small.nmea - <small.trace >out
equal_files 'the proof of a trace from standard input' expected out

#--- Which lines are sentences

record '\nGPRMC,1\n $PA\n\377\376\n$PB\n!PC\r\n'
equal 'only lines that begin with $ or ! are sentences' \
    '6 lines read, 4 skipped, 2 sentences stored, 1 message, 23 bytes' "$(cat out)"

record '$PA\000A\n$PB\000\n$G\n$PC\n'
equal 'lines that a trace cannot give back are skipped' \
    '4 lines read, 3 skipped, 1 sentence stored, 1 message, 18 bytes' "$(cat out)"

record '$PABCD,\377\001\n'
equal 'other bytes of a sentence stay' '24504142 43442cff 010a' \
    "$(tail -c +15 trace | od -An -tx1 -v | tr -d ' \n' | sed 's/......../& /g')"

# line LENGTH CODE: a sentence of that many bytes, with its line feed.
line() {
    printf '%s' "$2"
    head -c $(($1 - 1 - ${#2})) /dev/zero | tr '\0' 'x'
    echo
}

line 65523 '$PLONG' >log
nmea2trace log trace >out
equal 'the longest line that fits' \
    '1 line read, 0 skipped, 1 sentence stored, 1 message, 65537 bytes' "$(cat out)"
{ line 65524 '$PLONG'; line 7 '$PA'; } >log
nmea2trace log trace >out
equal 'a line too long for the size field is skipped' \
    '2 lines read, 1 skipped, 1 sentence stored, 1 message, 21 bytes' "$(cat out)"

{ line 65000 '$PAAAA'; line 523 '$PBBBB'; } >log
nmea2trace log trace >out
equal 'a message is filled to the last byte' \
    '2 lines read, 0 skipped, 2 sentences stored, 1 message, 65537 bytes' "$(cat out)"
{ line 65000 '$PAAAA'; line 524 '$PBBBB'; } >log
nmea2trace log trace >out
equal 'a new message begins when the size field is exhausted' \
    '2 lines read, 0 skipped, 2 sentences stored, 2 messages, 65552 bytes' "$(cat out)"
succeeds 'checkTrace of long messages' checkTrace log trace

# nothing LOG COUNTS: no sentence is in the log, written as printf takes it.
nothing() {
    printf "$1" >log
    refuses 1 'nmea2trace: log: holds no NMEA sentence' nmea2trace log trace
    equal "the counts of $1" "$2, 0 sentences stored, 0 messages, 0 bytes" "$(cat out)"
    equal "the trace of $1" '0' "$(wc -c <trace)"
}
nothing '' '0 lines read, 0 skipped'
nothing 'noise' '1 line read, 1 skipped'
nothing '\n\n' '2 lines read, 2 skipped'
succeeds 'checkTrace of nothing' checkTrace log trace
succeeds 'traceview of nothing' traceview trace
equal 'no lines of nothing' '' "$(cat out)"
trace2gpx trace >track.gpx
valid_gpx track.gpx

#--- Which sentences make a message

grouped '$GPRMC,1\n$GPRMC,2\n' $' $GPRMC,1\n $GPRMC,2'
grouped '$PAAA,1\n$PBBB,1\n$PAAA,2\n$PBBB,2\n' $' $PAAA,1 $PBBB,1\n $PAAA,2 $PBBB,2'
grouped '$GNGSV,1\n$GLGSV,1\n' $' $GPGSV,1\n $GPGSV,1'
grouped '$GPRMC,123519,\n$GPGGA,123520,\n' $' $GPRMC,123519,\n $GPGGA,123520,'
grouped '$GPRMC,123519,\n$GPGGA,123519.000,\n' ' $GPGGA,123519.000, $GPRMC,123519,'
grouped '$GPRMC,123519.5,\n$GPGGA,123519.500,\n' ' $GPGGA,123519.500, $GPRMC,123519.5,'
grouped '$GPRMC,123519.05,\n$GPGGA,123519.5,\n' $' $GPRMC,123519.05,\n $GPGGA,123519.5,'
grouped '$GPGLL,1\n$GPRMC,123519,\n$GPZDA,1\n$GPGGA,123519,\n' \
    ' $GPGGA,123519, $GPGLL,1 $GPRMC,123519, $GPZDA,1'
for time in '' 12351 1235190 240000 126000 123560 12351a '123519.' 123519.x 123519,5 -12351; do
    grouped "\$GPRMC,123519,\\n\$GPGGA,$time,\\n" " \$GPGGA,$time, \$GPRMC,123519,"
done
grouped '$GPGGA,,\n$GPRMC,123519,\n$GPGLL,1\n' ' $GPGGA,, $GPGLL,1 $GPRMC,123519,'

#--- Time stamps

stamped '$GPRMC,123519.123456789,V,,,,,,,230394,,,\n' 0a9bc98157625315
stamped '$GPRMC,123519.1234567899,V,,,,,,,230394,,,\n' 0a9bc98157625315
stamped '$GPRMC,000000,A,,,,,,,010180,,,\n' "$(seconds '1980-01-01 00:00:00')"
stamped '$GPRMC,235959,A,,,,,,,311279,,,\n' "$(seconds '2079-12-31 23:59:59')"
stamped '$GPRMC,010203,A,,,,,,,290200,,,\n' "$(seconds '2000-02-29 01:02:03')"
stamped '$GPRMC,010203,A,,,,,,,010300,,,\n' "$(seconds '2000-03-01 01:02:03')"
stamped '$GPRMC,010203,A,,,,,,,311299,,,\n' "$(seconds '1999-12-31 01:02:03')"
stamped '$GPRMC,235960,A,,,,,,,311216,,,\n' "$(seconds '2017-01-01 00:00:00')"
for date in '' 290223 310424 000124 320124 010024 011324 01012 0101240 0101a4 '+10124'; do
    stamped "\$GPRMC,010203,A,,,,,,,$date,,,\\n" 0000000000000000
done
for time in '' 240000 006000 000060 12351 a23519; do
    stamped "\$GPRMC,$time,A,,,,,,,230394,,,\\n" 0000000000000000
done
noon=$(seconds '2024-02-29 12:00:00')
stamped '$GPRMC,1,V\n$GPRMC,120000,A,,,,,,,290224,,,\n$GPRMC,120001,A,,,,,,,,,,\n$GPGGA,120002,\n' \
    $'0000000000000000\n'"$noon"$'\n'"$noon"$'\n'"$noon"

#--- Views

record '$GPRMC,1,V,,,,,,,,,,\n$GPRMC,2,V,,,,,,,,,,\n$PA\n'
succeeds 'traceview --rdb without positions' traceview --rdb trace
equal 'no RDB text without a position' '' "$(cat out)"
succeeds 'traceview --first without positions' traceview --first trace
equal 'no message has a position' '' "$(cat out)"
record '$GPGGA,000001,,,,,1,04,\n$GPRMC,000002,A,4807.038,N,01131.000,E,,,,,,\n$GPRMC,000003,A,4807.039,N,01131.000,E,,,,,,\n'
equal 'traceview --first shows the first message with a position' \
    'RMC: time 000002, date 000000, valid, latitude 48.1173000000 deg, longitude 11.5166666667 deg, speed 0.000000 km/h, course 0.0000 deg' \
    "$(traceview --first --fix trace)"
record '$GPGGA,000001,,,,,0,00,\n$GPRMC,000001,V,,,,,,,010203,003.1,W*6A\r\n$GPGGA,000002,4807.038,N,01131.000,E\r\n$GPGGA,000003,4807.038,N,01131.000,E,2,01\r\n$GPGGA,000004,,,,,\r\n'
cat >expected <<'END'
RMC: time 000001, date 010203, not valid, no position, speed 0.000000 km/h, course 0.0000 deg
GGA: time 000001, quality 0, no position, 0 satellites, altitude 0.0000 m
GGA: time 000002, quality unknown, latitude 48.1173000000 deg, longitude 11.5166666667 deg, 0 satellites, altitude 0.0000 m
GGA: time 000003, quality 2, latitude 48.1173000000 deg, longitude 11.5166666667 deg, 1 satellite, altitude 0.0000 m
GGA: time 000004, quality unknown, no position, 0 satellites, altitude 0.0000 m
END
succeeds 'traceview --fix of half a fix' traceview --fix trace
equal_files 'what is missing does not look like a position' expected out
traceview --fields trace >out
equal 'the fields hold no line ends' '11. Magnetic direction = W*6A 12. Mode indicator = ' \
    "$(sed -n '12,13p' out | tr '\n' ' ' | sed 's/ $//')"
equal 'the lines of the fields' "$((13 + 4 * 15))" "$(wc -l <out)"
equal 'no carriage return among the fields' 0 "$(grep -c -a $'\r' out)"

record '$PA\n'
succeeds 'traceview without RMC and GGA' traceview --fields --fix trace
equal 'no fields without RMC and GGA' '' "$(cat out)"

#--- Tracks

track '$GPRMC,,A,9000.000,N,18000.000,E,,,,,,\n'
equal 'the north pole, 180 degrees east' \
    '<trkpt lat="90.0000000000" lon="-180.0000000000"></trkpt>' "$track"
track '$GPRMC,,A,9000.000,S,18000.000,W,,,,,,\n'
equal 'the south pole, 180 degrees west' \
    '<trkpt lat="-90.0000000000" lon="-180.0000000000"></trkpt>' "$track"
track '$GPRMC,,A,0000.000,N,17959.99999999999,E,,,,,,\n'
equal 'rounded up to 180 degrees east' \
    '<trkpt lat="0.0000000000" lon="-180.0000000000"></trkpt>' "$track"
for fix in V,4807.038,N,01131.000,E ,4807.038,N,01131.000,E A,9000.001,N,01131.000,E \
    A,4807.038,N,18000.001,W A,nan,N,01131.000,E A,4807.038,N,inf,E A,4807.038,N,1e999,E \
    A,,N,01131.000,E A,4807.038,N,,E A,4807.038,,01131.000,E A,4807.038,N,4,02.3; do
    track "\$GPRMC,,$fix,,,,,,\\n"
    equal "no point of $fix" '' "$track"
done
for altitude in '' nan inf -1e999; do
    track "\$GPRMC,,A,4807.038,N,01131.000,E,,,,,,\\n\$GPGGA,,,,,,1,08,0.9,$altitude,M,,,,\\n"
    equal "no elevation of \"$altitude\"" \
        '<trkpt lat="48.1173000000" lon="11.5166666667"></trkpt>' "$track"
done
track '$GPRMC,,A,4807.038,N,01131.000,E,,,,,,\n$GPGGA,,,,,,0,00,,-3.25,M,,,,\n'
equal 'an elevation below the sea' \
    '<trkpt lat="48.1173000000" lon="11.5166666667"><ele>-3.250</ele></trkpt>' "$track"
track '$GPGGA,,4807.038,N,01131.000,E,1,08,,1,M,,,,\n'
equal 'no point without RMC' '' "$track"
# date_of STAMP: the date that trace2gpx makes of a time stamp in hexadecimal.
date_of() {
    message 0033 "$1" '$GPRMC,,A,4807.038,N,01131.000,E,,,,,,\n' >trace
    trace2gpx trace | sed -n 's/.*<time>\(.*\)<\/time>/\1/p'
}
equal 'the first nanosecond' 1970-01-01T00:00:00.000000001Z "$(date_of 0000000000000001)"
equal 'the last nanosecond' 2554-07-21T23:34:33.709551615Z "$(date_of ffffffffffffffff)"
for day in 1970-01-01 1972-02-29 1999-12-31 2000-02-29 2000-03-01 2024-12-31 2079-12-31 \
    2100-02-28 2100-03-01 2200-01-01; do
    equal "the date $day" "${day}T12:34:56Z" "$(date_of "$(seconds "$day 12:34:56")")"
done

#--- Damage

first_line=$(head -1 small.lines)
# truncation_holds LENGTH: ./cut.trace holds so many bytes of the small trace.
truncation_holds() {
    local begin=0 size=163 line='' error='' left bytes status=0
    if [ "$1" -ge 165 ]; then
        begin=165 size=73 line=$first_line
    fi
    left=$(($1 - begin))
    bytes="$left bytes"
    if [ $left -eq 1 ]; then bytes='1 byte'; fi
    if [ $left -ge 14 ]; then
        error="message. (size field $size, $bytes left)"
    elif [ $left -gt 0 ]; then
        error="header. ($bytes left)"
    fi
    if [ -n "$error" ]; then
        error="cut.trace: damaged at byte $begin: MessageFactory: The bytes end within the $error"
    fi
    traceview cut.trace >out 2>err || status=$?
    [ "$(<out)" = "$line" ] && [ "$(<err)" = "${error:+traceview: $error}" ] &&
        [ $status -eq $((left > 0)) ] || return 1
    trace2gpx cut.trace >out 2>err
    valid_gpx out
    [ "$(grep -c '<trkpt' out)" -eq $(($1 >= 165)) ] &&
        [ "$(<err)" = "${error:+trace2gpx: $error}" ]
}
# Around the headers and the ends every length, between them some.
for length in {0..16} 80 150 {163..181} 200 220 {238..239}; do
    head -c "$length" small.trace >cut.trace
    if truncation_holds "$length"; then pass; else fail "the first $length bytes" "$(cat err)"; fi
done

# damaged OFFSET BYTES: ./damaged is the small trace with other bytes (as printf takes them) there.
damaged() {
    cp small.trace damaged
    printf "$2" | dd of=damaged bs=1 seek="$1" conv=notrunc status=none
}
# The first message is good, so its line is printed; the damage begins behind it.
second_is_refused() {
    damaged "$1" "$2"
    refuses 1 "damaged: damaged at byte 165: $3" traceview damaged
    equal_files 'the line before the damage' <(head -1 small.lines) out
    refuses 1 "damaged: damaged at byte 165: $3" trace2gpx damaged
    valid_gpx out
    equal 'the points before the damage' 1 "$(grep -c '<trkpt' out)"
    refuses 1 "damaged: damaged at byte 165: $3" checkTrace small.nmea damaged
}
header='MessageFactory: The size field is too small for the header.'
end='MessageFactory: The bytes end within the message.'
second_is_refused 165 '\000\000' "$header (size field 0, 75 bytes left)"
second_is_refused 165 '\000\013' "$header (size field 11, 75 bytes left)"
second_is_refused 165 '\000\014' 'GPSTraceMessage: No NMEA code found.'
second_is_refused 165 '\000\112' "$end (size field 74, 75 bytes left)"
second_is_refused 165 '\377\377' "$end (size field 65535, 75 bytes left)"
damaged 0 '\000\244'
refuses 1 'damaged: damaged at byte 0: The message holds a NUL byte' traceview damaged
damaged 0 '\000\356'
refuses 1 'damaged: damaged at byte 0: The message holds a NUL byte' traceview damaged
equal 'a size field that reaches over the next message hides nothing' '' "$(cat out)"
printf '\001' >damaged
refuses 1 'damaged at byte 0: MessageFactory: The bytes end within the header. (1 byte left)' \
    traceview damaged

#--- Messages of other types

# other ID: a message of another type, 16 bytes, NUL bytes among them.
other() {
    printf '\000\016'"$1"'\000\000\000\000\000\000\000\000\000\000\000\377'
}
first() { head -c 165 small.trace; }
reader='MessageFactory: No reader for the message id.'

# passed_over TEXT: ./mixed.trace holds both messages of the small trace among others.
passed_over() {
    refuses 1 "mixed.trace: $1" traceview mixed.trace
    equal_files "the lines of what is readable: $1" small.lines out
    refuses 1 "mixed.trace: $1" trace2gpx mixed.trace
    equal_files "the track of what is readable: $1" small.gpx out
    refuses 1 "mixed.trace: $1" checkTrace small.nmea mixed.trace
    equal 'no proof of what cannot be read' '' "$(cat out)"
}
{ first; other '\000\001'; cat second.trace; } >mixed.trace
passed_over "1 message passed over, the first at byte 165: $reader (id 1)"
{ other '\377\377'; first; other '\000\000'; cat second.trace; other '\001\026'; } >mixed.trace
passed_over "3 messages passed over, the first at byte 0: $reader (id 65535)"
{ cat small.trace; other '\000\025'; } >mixed.trace
passed_over "1 message passed over, the first at byte 240: $reader (id 21)"

other '\000\000' >mixed.trace
refuses 1 "1 message passed over, the first at byte 0: $reader (id 0)" traceview mixed.trace
{ first; other '\000\001'; other '\000\001' | head -c 15; } >mixed.trace
refuses 1 'mixed.trace: damaged at byte 181: MessageFactory: The bytes end within the message. (size field 14, 15 bytes left)' \
    traceview mixed.trace
equal_files 'the line before the damage' <(head -1 small.lines) out
{ first; other '\000\001'; cat second.trace; } >mixed.trace
succeeds 'traceview --first does not read on' traceview --first mixed.trace
equal_files 'the first line' <(head -1 small.lines) out
sed '5s/PXYZ/PABC/;6s/PXYZ/PABC/' small.nmea >other.nmea
refuses 1 'the message at byte 181 does not hold what the log says' checkTrace other.nmea mixed.trace

#--- The proof finds every difference

damaged 100 'X'
refuses 1 'the message at byte 0 does not hold what the log says' checkTrace small.nmea damaged
message 0012 0000000000000000 '\n$PA\n\n' >blank.trace
printf '$PA\n' >blank.nmea
refuses 1 'the message at byte 0 is not the same when it is written again' \
    checkTrace blank.nmea blank.trace
head -c 165 small.trace >shorter.trace
refuses 1 'the trace lacks the sentences of the log from its line 5 on' \
    checkTrace small.nmea shorter.trace
head -n 4 small.nmea >shorter.nmea
refuses 1 'the message at byte 165 does not hold what the log says' \
    checkTrace shorter.nmea small.trace
sed 's/,46.9,/,46.8,/' small.nmea >other.nmea
refuses 1 'the message at byte 0 does not hold' checkTrace other.nmea small.trace
sed 's/\r$//' small.nmea >other.nmea
refuses 1 'the message at byte 0 does not hold' checkTrace other.nmea small.trace
sed '5d' small.nmea >other.nmea
refuses 1 'the message at byte 165 does not hold' checkTrace other.nmea small.trace
sed '2p' small.nmea >other.nmea
refuses 1 'the message at byte 0 does not hold' checkTrace other.nmea small.trace
cat second.trace <(head -c 165 small.trace) >other.trace
refuses 1 'the message at byte 0 does not hold' checkTrace small.nmea other.trace

damaged 13 '\001'
refuses 1 'the message at byte 0 does not bear the time of its sentences' checkTrace small.nmea damaged
printf '$GPRMC,120000,A,,,,,,,290224,,,\n$GPRMC,120001,A,,,,,,,,,,\n' >stamps.nmea
nmea2trace stamps.nmea stamps.trace >/dev/null
succeeds 'checkTrace of a message without a date' checkTrace stamps.nmea stamps.trace
message 0026 0000000000000000 '$GPRMC,120001,A,,,,,,,,,,\n' >second
{ head -c 46 stamps.trace; cat second; } >damaged
refuses 1 'the message at byte 46 does not bear the time of its sentences' \
    checkTrace stamps.nmea damaged

#--- Wrong use

declare -A files=([nmea2trace]='2 file names' [traceview]='1 file name'
    [trace2gpx]='1 file name' [checkTrace]='2 file names')
for program in nmea2trace traceview trace2gpx checkTrace; do
    for arguments in --help -h '--help x y z'; do
        # shellcheck disable=SC2086 # the arguments are words
        succeeds "$program --help" $program $arguments
        equal "$program: usage" "Usage: $program " "$(head -1 out | grep -o "^Usage: $program ")"
    done
    refuses 2 'unknown option --nonsense' $program --nonsense small.nmea out.trace
    refuses 2 "takes ${files[$program]}, not 0" $program
    refuses 2 "takes ${files[$program]}, not 3" $program small.nmea a b
    output=/dev/full refuses 1 'standard output cannot be written' $program --help
    output=closed refuses 1 'standard output cannot be written' $program --help
done

declare -A reasons=([missing]='No such file or directory' [missing/log]='No such file or directory'
    [small.nmea/log]='Not a directory' [.]='Is a directory' [/]='Is a directory'
    [/dev/full]='No space left on device' [missing/trace]='No such file or directory')
for wrong in missing missing/log small.nmea/log . /; do
    text="$wrong: cannot be read: ${reasons[$wrong]}"
    refuses 2 "$text" traceview "$wrong"
    refuses 2 "$text" trace2gpx "$wrong"
    equal "no track of $wrong" '' "$(cat out)"
    refuses 2 "$text" checkTrace small.nmea "$wrong"
    refuses 2 "$text" checkTrace "$wrong" small.trace
    refuses 2 "$text" nmea2trace "$wrong" out.trace
done
equal 'no trace of what cannot be read' missing "$(cat out.trace 2>/dev/null || echo missing)"
for program in 'nmea2trace - out.trace' 'traceview -' 'trace2gpx -'; do
    # shellcheck disable=SC2086 # the arguments are words
    refuses 2 '-: cannot be read: Is a directory' $program <.
    # shellcheck disable=SC2086 # the arguments are words
    refuses 2 '-: cannot be read: Bad file descriptor' $program <&-
done
refuses 2 'small.nmea: is the log itself' nmea2trace small.nmea ./small.nmea
equal_files 'the log is untouched' <(printf "$small_log") small.nmea

cp small.trace ./-trace
succeeds 'a name that begins with -' traceview -- -trace
equal_files 'the lines of a name that begins with -' small.lines out

#--- Output that cannot be written

for wrong in /dev/full missing/trace .; do
    text="$wrong: cannot be written: ${reasons[$wrong]}"
    refuses 1 "$text" nmea2trace small.nmea "$wrong"
    refuses 1 "$text" nmea2trace "${logs[0]}" "$wrong"
    equal 'no counts of what was not written' '' "$(cat out)"
done
for output in /dev/full closed; do
    refuses 1 'standard output cannot be written' traceview small.trace
    refuses 1 'standard output cannot be written' trace2gpx small.trace
    refuses 1 'standard output cannot be written' checkTrace small.nmea small.trace
    refuses 1 'standard output cannot be written' nmea2trace small.nmea out.trace
    equal_files 'the trace is whole without the counts' small.trace out.trace
    refuses 1 'standard output cannot be written' nmea2trace - out.trace <small.nmea
    equal_files 'the trace is not mixed with the counts' small.trace out.trace
done
unset output

#--- Logs of receivers

# counts_add_up LOG: lines = skipped + stored, and the trace is as long as nmea2trace says.
counts_add_up() {
    local lines skipped stored messages bytes
    read -r lines skipped stored messages bytes < <(tr -cs '0-9\n' ' ' <out)
    [ "$lines" -eq "$(awk 'END { print NR }' "$1")" ] && [ "$lines" -eq $((skipped + stored)) ] &&
        [ "$bytes" -eq "$(wc -c <log.trace)" ] && [ "$messages" -eq "$(traceview log.trace | wc -l)" ]
}

for log in "${logs[@]}"; do
    succeeds "nmea2trace $log" nmea2trace "$log" log.trace
    if counts_add_up "$log"; then pass; else fail "the counts of $log" "$(cat out)"; fi
    succeeds "checkTrace $log" checkTrace "$log" log.trace
    succeeds "traceview $log" traceview --fields --fix --rdb --hex log.trace
    succeeds "trace2gpx $log" trace2gpx log.trace
    valid_gpx out
done

#--- All tracks

if xmllint --noout --nonet --schema "$source_dir/tests/tools/gpx11.xsd" tracks/*.gpx 2>xmllint.log; then
    pass
else
    fail 'tracks that are no valid GPX' "$(grep -v ' validates$' xmllint.log | head -5)"
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
