// Compares the hosts that we find in http and https links with those of a browser-grade URL parser.
//
//     node url_against_browser.mjs URL_HOSTS
//
// Where both find a host, a browser that is given ours must come to its own. Where one finds none,
// the difference must be one that is named below; each kind is counted.

import { spawnSync } from "node:child_process";

const LINKS = 6000;

// Always the same links (mulberry32).
let state = 20240229;
function random() {
    state = (state + 0x6d2b79f5) | 0;
    let t = Math.imul(state ^ (state >>> 15), 1 | state);
    t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
    return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
}
const pick = (list) => list[Math.floor(random() * list.length)];
const chance = (probability) => random() < probability;

const BEFORE = ["", "", "", " ", "\t", "\n", "\x00", "\x1f ", "\r\n"];
const SCHEMES = ["https", "http", "HTTPS", "hTTp", "ht\ntps", "h\tttp"];
const SLASHES = ["//", "//", "//", "//", "/", "", "///", "\\\\", "/\\", "\\/", "/\t/", "////"];
const USERS = ["", "", "", "", "", "", "", "", "user@", "user:pass@", "@", ":@", "a@b@", "work.example@", "%40@",
    "ü@", "a b@", "user:p:q@", "[@", "]@"];
const HOSTS = ["work.example", "WORK.Example", "a", "localhost", "work.example.", "a..b", ".a",
    "-a-.b_c", "a!$&'()*+,;=b", "127.0.0.1", "0x7f.1", "1.2.3", "256.1", "1.2.3.4.5", "4294967296",
    "0", "09", "a.1", "a.0x1", "1.a", "[::1]", "[2001:DB8::1]", "[::ffff:1.2.3.4]", "[::1", "::1]",
    "[]", "[1]", "[g::1]", "[::1%25eth0]", "[1:2:3:4:5:6:7:8:9]", "work%2eexample", "%41", "a%b",
    "%", "bücher.example", "BÜCHER.example", "straße.example", "faß.example", "ａｂ.example",
    "a。b", "İ.example", "\u00ad", "a\u200db", "☃.example", "xn--bcher-kva.example", "xn--a",
    "xn--", "XN--BCHER-KVA.example", "a b", "a\tb", "a\nb.example", "a<b", "a>b", "a^b", "a|b",
    "a`b", "a\"b", "a{b}", "a\x00b", "a\x1fb", "a\x7fb", "a[b", "a]b", "", "evil.example\\@a",
    "a/b", "\u202ea", "😀.example", "a\u0301.example", "é.example", "www.work.example"];
const PORTS = ["", "", "", "", "", "", "", "", "", "", ":80", ":443", ":8080", ":", ":0", ":65535", ":65536", ":00080",
    ":-1", ":+1", ":8a", ":80:80", ":999999999999", ":8\t0", ":٣", ": 80"];
const TAILS = ["", "", "/", "/path", "?q", "#f", "/a/../b?c#d", "\\x", "/%41 ü", "?@c.d/", "#@c.d",
    "/\t\n", " ", "\x00", "/\\@a.b", ";x", "&y"];
// Characters that change the meaning of a link, thrown in at any place.
const STRAY = ["/", "\\", "?", "#", "@", ":", "[", "]", "%", " ", "\t", "\n", "\x00", ".", "ü", "1",
    "a", "|", "\u3002", "%2e", "\u00ad"];

function link() {
    let text = pick(BEFORE) + pick(SCHEMES) + ":" + pick(SLASHES) + pick(USERS) + pick(HOSTS) +
        pick(PORTS) + pick(TAILS) + pick(BEFORE);
    while (chance(0.2)) {
        const place = 6 + Math.floor(random() * (text.length - 5));
        text = text.slice(0, place) + pick(STRAY) + text.slice(place);
    }
    return text;
}

function browserHost(text) {
    try {
        return new URL(text).hostname;
    } catch {
        return null;
    }
}

// Of the whole text in front of the path, after what a browser removes.
const authorityOf = (text) => /^[^:]*:[/\\]*([^/\\?#]*)/.exec(text.replace(/[\t\n\r]/g, ""))[1];

// The name of the difference, or null when there must be none.
function difference(text, ours, browsers) {
    if (ours === null) {
        return authorityOf(text).includes("%") ? "percent in the host: none to us" : null;
    }
    if (browserHost("http://" + ours + "/") !== null) return null;
    if (ours.startsWith("[")) return "IPv6 address that makes no sense";
    if (/[^\x00-\x7f]/.test(ours)) return "international name that cannot be";
    if (/(^|\.)xn--/i.test(ours)) return "punycode that cannot be";
    if (/(^|\.)([0-9]+|0x[0-9a-f]*)\.?$/i.test(ours)) return "number that is no IPv4 address";
    return null;
}

// A stray character can make another scheme of it, which is none of this test's business.
const isWebLink = (text) => /^[\x00-\x20]*https?:/i.test(text.replace(/[\t\n\r]/g, ""));
const links = [...new Set(Array.from({ length: LINKS }, link))].filter(isWebLink);
const hex = (text) => Buffer.from(text).toString("hex");
const run = spawnSync(process.argv[2], {
    input: links.map(hex).join("\n") + "\n",
    encoding: "latin1",
    maxBuffer: 1 << 26,
});
if (run.status !== 0) throw new Error(`url_hosts failed: ${run.error ?? run.stderr}`);
const answers = run.stdout.trimEnd().split("\n");
if (answers.length !== links.length) throw new Error("not one answer for each link");

const counts = new Map();
let failures = 0;
links.forEach((text, i) => {
    const ours = answers[i] === "-" ? null : Buffer.from(answers[i], "hex").toString();
    const browsers = browserHost(text);
    let kind = null;
    if (ours === null && browsers === null) {
        kind = "no host to either";
    } else if (ours !== null && browsers !== null) {
        const asIs = ours.toLowerCase() === browsers;
        if (asIs) kind = "the same host";
        else if (browserHost("http://" + ours + "/") === browsers) kind = "the same host, rewritten";
    } else {
        kind = difference(text, ours, browsers);
    }
    if (kind === null) {
        ++failures;
        console.log(`FAIL ${JSON.stringify(text)}: ours ${JSON.stringify(ours)}, ` +
            `browser's ${JSON.stringify(browsers)}`);
        return;
    }
    counts.set(kind, (counts.get(kind) ?? 0) + 1);
});
for (const [kind, count] of counts) console.log(`${count} ${kind}`);
for (const kind of ["the same host", "the same host, rewritten", "no host to either",
    "percent in the host: none to us"]) {
    if ((counts.get(kind) ?? 0) < 50) throw new Error(`too few links of the kind: ${kind}`);
}
process.exit(failures === 0 ? 0 : 1);
