// Compares the hosts that we find in links with those of a browser-grade URL parser.
//
//     node url_against_browser.mjs URL_HOSTS
//
// URL_HOSTS is the program of that name. Every pair of answers must be an agreement or a difference
// that is named and explained below. Each kind is counted and shown with an example.

import { spawnSync } from "node:child_process";

const WEB_LINKS = 120000;
const OTHER_LINKS = 40000;

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
const USERS = ["", "", "", "", "", "", "", "", "user@", "user:pass@", "@", ":@", "a@b@", "work.example@",
    "%40@", "ü@", "a b@", "user:p:q@", "[@", "]@"];
const HOSTS = ["work.example", "WORK.Example", "a", "localhost", "work.example.", "a..b", ".a",
    "-a-.b_c", "a!$&'()*+,;=b", "127.0.0.1", "0x7f.1", "1.2.3", "256.1", "1.2.3.4.5", "4294967296",
    "0", "09", "a.1", "a.0x1", "1.a", "[::1]", "[2001:DB8::1]", "[::ffff:1.2.3.4]", "[::1", "::1]",
    "[]", "[1]", "[g::1]", "[::1%25eth0]", "[1:2:3:4:5:6:7:8:9]", "work%2eexample", "%41", "a%b",
    "%", "bücher.example", "BÜCHER.example", "straße.example", "faß.example", "ａｂ.example",
    "a。b", "İ.example", "\u00ad", "a\u200db", "☃.example", "xn--bcher-kva.example", "xn--a",
    "xn--", "XN--BCHER-KVA.example", "a b", "a\tb", "a\nb.example", "a<b", "a>b", "a^b", "a|b",
    "a`b", "a\"b", "a{b}", "a\x00b", "a\x1fb", "a\x7fb", "a[b", "a]b", "", "evil.example\\@a",
    "a/b", "\u202ea", "😀.example", "a\u0301.example", "é.example", "www.work.example"];
const PORTS = ["", "", "", "", "", "", "", "", "", "", ":80", ":443", ":8080", ":", ":0", ":65535", ":65536",
    ":00080", ":-1", ":+1", ":8a", ":80:80", ":999999999999", ":8\t0", ":٣", ": 80"];
const TAILS = ["", "", "/", "/path", "?q", "#f", "/a/../b?c#d", "\\x", "/%41 ü", "?@c.d/", "#@c.d",
    "/\t\n", " ", "\x00", "/\\@a.b", ";x", "&y"];
// Characters that change the meaning of a link, thrown in at any place.
const STRAY = ["/", "\\", "?", "#", "@", ":", "[", "]", "%", " ", "\t", "\n", "\x00", ".", "ü", "1",
    "a", "|", "\u3002", "%2e", "\u00ad"];

const OTHER_SCHEMES = ["ftp", "FTP", "ws", "wss", "file", "file", "mailto", "ferrivane", "x-a+b.1",
    "httpsx", "javascript"];
const ANY = Array.from({ length: 128 }, (_, i) => String.fromCharCode(i)).concat(
    "ü", "ﬁ", "İ", "。", "\u200d", "😀");

// What any part of an ordinary link is made of.
const PLAIN = {
    before: [""], slashes: ["//"], users: ["", "", "user@", "user:pass@"],
    hosts: ["work.example", "WORK.Example", "localhost", "a", "127.0.0.1", "[::1]", "-a-.b_c",
        "xn--bcher-kva.example"],
    ports: ["", "", "", ":80", ":"], tails: ["", "/", "/path", "?q", "#f", "/a/../b?c#d", "?@c.d/"],
};
const anyHost = () => Array.from({ length: 1 + Math.floor(random() * 8) }, () => pick(ANY)).join("");

// Each part is an odd one with this probability.
function link(schemes, oddity) {
    const part = (plain, odd) => pick(chance(oddity) ? odd : plain);
    let text = part(PLAIN.before, BEFORE) + pick(schemes) + ":" + part(PLAIN.slashes, SLASHES) +
        part(PLAIN.users, USERS) + (chance(0.05) ? anyHost() : part(PLAIN.hosts, HOSTS)) +
        part(PLAIN.ports, PORTS) + part(PLAIN.tails, TAILS) + part(PLAIN.before, BEFORE);
    while (chance(oddity / 3)) {
        const place = 6 + Math.floor(random() * Math.max(0, text.length - 5));
        text = text.slice(0, place) + pick(STRAY) + text.slice(place);
    }
    return text;
}

function browserHost(text) {
    try {
        return new URL(text).hostname || null;
    } catch {
        return null;
    }
}

// What a browser removes from a link before it looks at it.
const cleaned = (text) => text.replace(/^[\x00-\x20]+|[\x00-\x20]+$/g, "").replace(/[\t\n\r]/g, "");
// Of a cleaned web link, all between the slashes and the path.
const authorityOf = (text) => /^[^:]*:[/\\]*([^/\\?#]*)/.exec(cleaned(text))[1];

// A host of ours that a browser refuses, so that the link goes nowhere and no rule of a host's can
// send it to the wrong profile. To know of these we would have to carry the tables of IDNA and the
// whole of the address parsers.
function refusedHost(ours) {
    if (browserHost("http://" + ours + "/") !== null) return null;
    if (ours.startsWith("[")) return "IPv6 address that makes no sense: no host to the browser";
    if (/[^\x00-\x7f]/.test(ours)) return "international name that cannot be: no host to the browser";
    if (/(^|\.)xn--/i.test(ours)) return "punycode that cannot be: no host to the browser";
    // The last label is a number, and the whole is no IPv4 address.
    if (/(^|\.)([0-9]+|0x[0-9a-f]*)\.?$/i.test(ours)) {
        return "number that is no IPv4 address: no host to the browser";
    }
    return null;
}

// The name of a difference over a web link, or null when there must be none.
function webDifference(text, ours, browsers) {
    if (ours !== null) return browsers === null ? refusedHost(ours) : null;
    // A browser decodes it. Nobody writes hosts so but to deceive; then no host rule fits.
    if (authorityOf(text).includes("%")) return "percent sign in the host: no host to us";
    return null;
}

// The grammar of RFC 3986, appendix A, with an IPv6 address in characters only.
const UNENCODED = "[A-Za-z0-9._~!$&'()*+,;=-]";
const CHARACTER = `${UNENCODED}|%[0-9A-Fa-f]{2}`;
const URI = new RegExp(`^[A-Za-z][A-Za-z0-9+.-]*:(//((${CHARACTER}|:)*@)?` +
    `(\\[([0-9A-Fa-f:.]+|[vV][0-9A-Fa-f]+\\.(${UNENCODED}|:)+)\\]|(${CHARACTER})*)(:[0-9]*)?` +
    `(/(${CHARACTER}|[/:@])*)?|(?!//)(${CHARACTER}|[/:@])*)` +
    `(\\?(${CHARACTER}|[/:@?])*)?(#(${CHARACTER}|[/:@?])*)?$`);

// The same for a link of another scheme. Here we read by RFC 3986 and a browser does not; who opens
// such a link is another program, which may go by either.
function otherDifference(text, ours, browsers) {
    // Letters beyond ASCII, blanks, backslashes, brackets, a second "@", half an encoding.
    if (!URI.test(text)) return ours === null ? "no URI by RFC 3986: no host to us" : null;
    const scheme = /^[^:]*/.exec(text)[0].toLowerCase();
    const isSpecial = ["ftp", "ws", "wss", "file"].includes(scheme);
    if (ours === null) {
        // To a browser these schemes have a host behind any number of slashes.
        const hasAuthority = /^[^:]*:\/\/[^/?#]/.test(text);
        return isSpecial && !hasAuthority ? "no authority by RFC 3986: no host to us" : null;
    }
    // A browser decodes the hosts of its own schemes before it looks at them.
    if (isSpecial && ours.includes("%")) return "percent-encoded host: kept as it is written by us";
    if (browsers !== null) return null;
    if (scheme === "file") {
        // "localhost" is left out, a drive's letter is none, and there are no users and ports.
        if (ours.toLowerCase() === "localhost") return "localhost of a file: no host to the browser";
        if (/^file:\/\/[a-z]:?([/?#]|$)/i.test(text)) return "letter of a drive: no host to the browser";
        if (/^file:\/\/[^/?#]*[:@]/i.test(text)) return "file with user or port: no host to the browser";
    }
    const port = /:([0-9]+)$/.exec(/^[^:]*:\/\/([^/?#]*)/.exec(text)[1]);
    if (port && Number(port[1]) > 65535) return "port beyond 65535: no host to the browser";
    return refusedHost(ours);
}

const hex = (text) => Buffer.from(text).toString("hex");

function ourHosts(links) {
    const run = spawnSync(process.argv[2], {
        input: links.map(hex).join("\n") + "\n",
        encoding: "latin1",
        maxBuffer: 1 << 28,
    });
    if (run.status !== 0) throw new Error(`url_hosts failed: ${run.error ?? run.stderr}`);
    const answers = run.stdout.trimEnd().split("\n");
    if (answers.length !== links.length) throw new Error("not one answer for each link");
    return answers.map((answer) => answer === "-" ? null : Buffer.from(answer, "hex").toString());
}

// The kind of a pair of answers, or null for one that must not be.
function kindOf(text, ours, browsers, difference) {
    if (ours === null && browsers === null) return AGREE.neither;
    if (ours !== null && browsers !== null) {
        if (ours.toLowerCase() === browsers.toLowerCase()) return AGREE.same;
        // What it makes of our host must be what it made of the link: "0x7f.1" is 127.0.0.1.
        if (browserHost("http://" + ours + "/") === browsers) return AGREE.rewritten;
    }
    return difference(text, ours, browsers);
}

const AGREE = {
    same: "the same host",
    rewritten: "the same host, rewritten by the browser",
    neither: "no host to either",
};

// Compares and prints; returns how many pairs must not be.
function compare(name, links, difference, leastOfEach) {
    const kinds = new Map();
    const ours = ourHosts(links);
    let failures = 0;
    links.forEach((text, i) => {
        const browsers = browserHost(text);
        const kind = kindOf(text, ours[i], browsers, difference);
        if (kind === null) {
            ++failures;
            console.log(`FAIL ${JSON.stringify(text)}: ours ${JSON.stringify(ours[i])}, ` +
                `the browser's ${JSON.stringify(browsers)}`);
            return;
        }
        const known = kinds.get(kind) ?? { count: 0, text, ours: ours[i], browsers };
        kinds.set(kind, { ...known, count: known.count + 1 });
    });
    const isAgreement = (kind) => Object.values(AGREE).includes(kind);
    console.log(`${name}: ${links.length} links`);
    for (const agreements of [true, false]) {
        console.log(agreements ? "  agreements" : "  differences");
        for (const [kind, { count, text, ours, browsers }] of [...kinds].sort()) {
            if (isAgreement(kind) !== agreements) continue;
            console.log(`    ${String(count).padStart(6)}  ${kind}\n            ` +
                `${JSON.stringify(text)}: ours ${ours}, the browser's ${browsers}`);
        }
    }
    for (const kind of leastOfEach) {
        if ((kinds.get(kind)?.count ?? 0) < 500) throw new Error(`too few links of the kind: ${kind}`);
    }
    return failures;
}

const isWebLink = (text) => /^https?:/i.test(cleaned(text));
// Exactly so many different ones. A stray character can turn one kind into the other.
function links(count, schemes, oddity, isWanted) {
    const found = new Set();
    while (found.size < count) {
        const text = link(schemes, oddity);
        if (isWanted(text)) found.add(text);
    }
    return [...found];
}

const failures =
    compare("http and https", links(WEB_LINKS, SCHEMES, 0.5, isWebLink), webDifference,
        [...Object.values(AGREE), "percent sign in the host: no host to us"]) +
    compare("other schemes", links(OTHER_LINKS, OTHER_SCHEMES, 0.2, (text) => !isWebLink(text)),
        otherDifference, [AGREE.same, AGREE.neither, "no URI by RFC 3986: no host to us"]);
process.exit(failures === 0 ? 0 : 1);
