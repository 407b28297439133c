// The moments of the page, drive behind drive, each in order of time; and how they are told.

const byId = (id) => document.getElementById(id);
const data = JSON.parse(byId('data').textContent);
const count = data.steps.length;

// Bytes, in which "~" and three digits stand for a piece of what was written before.
function expand(coded, length) {
    const digits = data.digits;
    const out = new Uint8Array(length);
    let end = 0;
    for (let i = 0; i < coded.length; ++i) {
        const c = coded[i];
        if (c !== '~' || coded[i + 1] === '~') {
            out[end++] = coded.charCodeAt(i);
            i += c === '~' ? 1 : 0;
            continue;
        }
        const back = digits.indexOf(coded[i + 1]) * digits.length + digits.indexOf(coded[i + 2]);
        for (let n = digits.indexOf(coded[i + 3]) + data.shortest; n > 0; --n, ++end) {
            out[end] = out[end - back];
        }
        i += 3;
    }
    return new TextDecoder().decode(out);
}

const texts = expand(data.texts, data.textLength).split('\n');
const nanoseconds = [];  // since 1970
const times = [];        // milliseconds
const driveOf = [];      // number of the drive

// Each with its first moment, the one behind its last, and its valid ones.
const drives = data.drives.map((drive, number) => Object.assign({number}, drive));
for (const drive of drives) {
    drive.begin = times.length;
    drive.end = drive.begin + drive.count;
    drive.valid = 0;
    let stamp = BigInt(drive.first);
    for (let i = drive.begin; i < drive.end; ++i) {
        stamp += BigInt(data.steps[i]) * BigInt(data.unit);
        nanoseconds.push(stamp);
        times.push(Number(stamp / 1000000n) + Number(stamp % 1000000n) / 1e6);
        driveOf.push(drive.number);
        drive.valid += data.valid[i];
    }
}
const several = drives.length > 1;

// Where the line of a value is open, a bit each; the first tells it of all fixes, the second of
// positions.
const breaks = new Map(data.breaks);
const HOLE = 1;
const NO_PLACE = 2;
const hasBreak = (i, bit) => (breaks.get(i) & bit) !== 0;

// The moment to begin with: the fastest, which is easily found in all pictures.
function fastestIn(begin, end) {
    let best = begin;
    for (let i = begin; i < end; ++i) {
        if (data.valid[i] && (!data.valid[best] || data.speed[i] > data.speed[best])) {
            best = i;
        }
    }
    return best;
}

// ---- Texts

const QUALITIES = ['no fix', 'GPS', 'differential', 'PPS', 'RTK', 'RTK float', 'dead reckoning',
    'manual', 'simulated'];
const DAY = 86400000;
const FIRST_DATED = 365 * DAY;

function grouped(number) {
    return String(number).replace(/\B(?=(\d{3})+$)/g, ',');
}

// As 2026-11-21 12:35:19, of milliseconds; a time without a date has none.
function clock(time) {
    const text = new Date(time).toISOString().replace('T', ' ').slice(0, -5);
    return time < FIRST_DATED ? text.slice(-8) : text;
}

// As 2026-11-21 12:35:19.5 UTC, with the digits of the fraction that it has.
function utcText(i) {
    if (nanoseconds[i] === 0n) {
        return 'a time that is not known';
    }
    const fraction = String(nanoseconds[i] % 1000000000n).padStart(9, '0').replace(/0+$/, '');
    return clock(Math.floor(Number(nanoseconds[i] / 1000000n))) + (fraction && '.' + fraction) +
        ' UTC' + (times[i] < FIRST_DATED ? ', no date' : '');
}

// The second date only where it is another one.
function spanText(from, to) {
    const [begin, end] = [clock(from), clock(to)];
    return begin + ' to ' + (begin.slice(0, 10) === end.slice(0, 10) ? end.slice(-8) : end);
}

// As 1:05:09, with tenths below ten seconds.
function elapsedText(milliseconds) {
    const seconds = Math.floor(milliseconds / 1000 + 1e-6);
    const two = (number) => String(number).padStart(2, '0');
    const tenths = Math.round(milliseconds / 100) % 10;
    return Math.floor(seconds / 3600) + ':' + two(Math.floor(seconds / 60) % 60) + ':' +
        two(seconds % 60) + (milliseconds < 10000 && tenths > 0 ? '.' + tenths : '');
}

function lengthText(metres) {
    return metres < 1000 ? Math.round(metres) + ' m' : (metres / 1000).toFixed(2) + ' km';
}

function qualityText(quality) {
    return quality + (QUALITIES[quality] ? ' (' + QUALITIES[quality] + ')' : '');
}

function valuesOf(i) {
    const unit = (column, text) => data[column][i] === null ? null : data[column][i] + text;
    const drive = drives[driveOf[i]];
    return [
        ['Position', texts[2 * i] || 'not valid'],
        ['Speed', unit('speed', ' km/h')],
        ['Course', unit('course', '°')],
        ['Altitude', unit('altitude', ' m')],
        ['Satellites', unit('satellites', '')],
        ['Quality', data.quality[i] === null ? null : qualityText(data.quality[i])],
        ['HDOP', unit('hdop', '')],
        ['From the start', elapsedText(times[i] - times[drive.begin]) + ', ' +
            lengthText(data.way[i])],
        ['Message', data.message[i] + (several ? ' of ' + drive.name : '')],
    ].map(([name, value]) => [name, value === null ? '–' : value]);
}

// What is heard at a step.
function spokenText(i) {
    const time = nanoseconds[i] === 0n ? 'time not known' : clock(times[i]).slice(-8);
    const speed = !data.valid[i] ? 'no valid position'
        : data.speed[i] === null ? 'no speed' : data.speed[i] + ' km/h';
    return (several ? 'drive ' + (driveOf[i] + 1) + ', ' : '') + time + ', ' + speed;
}

function element(tag, className, text) {
    const made = document.createElement(tag);
    made.className = className;
    made.textContent = text || '';
    return made;
}
