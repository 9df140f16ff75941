// Reads console logs of kdump: which runs they hold, what became of each, and what each line means.
// Serves the page and the command; `lines` is docs/log-lines.json.
"use strict";

const LogReader = (() => {
    const STAMP = /\[((?:Mon|Tue|Wed|Thu|Fri|Sat|Sun) (?:Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ \d]\d \d\d:\d\d:\d\d \d{4})\]/;
    const LONGEST_LINE = 8192;

    // Where the dumps of a kind lie. Without a copy the dump itself is sent, and goes with it.
    const CONFIG = "/mnt/data/iss_config/";
    const DUMPS = {
        "segmentrace": { source: CONFIG + "segmentrace.txt", copy: "/tmp/segmentrace.txt" },
        "dblock: dblock.txt": { source: CONFIG + "dblock.txt", copy: "/tmp/dblock.txt" },
        "dblock: dblock_backup.txt": { source: CONFIG + "dblock_backup.txt", copy: "/tmp/dblock_backup.txt" },
        "upgradefailstate": { source: "/tmp/upgrade_fail_state_upload.txt" },
        "connfaillog": { source: CONFIG + "cloud_conn_fail_log.txt", copy: "/tmp/cloud_conn_fail_log.txt" },
        "debugRamLog": { source: "/tmp/debug_info.txt" },
        "watchdog": { source: CONFIG + "current_config/cloud_watchdog.log", copy: "/tmp/cloud_watchdog.log" },
        "RAM": { source: "/tmp/cloud_dbg.txt", copy: "/tmp/cloud_ram_dbg.txt" },
        "FLASH": { source: CONFIG + "current_config/cloud_dbg.txt", copy: "/tmp/cloud_flash_dbg.txt" },
        "CONFIG ALL": { source: CONFIG + "current_config", copy: "/tmp/all_config.tar.bz2" },
    };

    const CURL_CODES = {
        3: "the URL is malformed", 5: "the proxy's name cannot be resolved", 6: "the host's name cannot be resolved",
        7: "the connection was refused or the host is unreachable", 18: "the reply broke off", 23: "the reply could not be kept in memory",
        26: "the file could not be read", 27: "memory ran out", 28: "the connection timed out", 35: "the TLS handshake failed",
        47: "the cloud redirects without end", 52: "the server closed the connection without a reply", 55: "sending failed",
        56: "receiving failed, or the proxy refused the tunnel", 58: "the client certificate CRT or its key KEY is missing or unusable",
        60: "the server's certificate cannot be verified", 65: "the data could not be sent a second time", 97: "the handshake with the proxy failed",
    };

    // What may follow a line of a run, by the names that `nameOf` gives. A line that follows another one
    // tells that lines between them are missing. "$" is the end of the run.
    const REQUEST_RESULT = "curl-error http-error no-reply reply request json failed-request";
    const UPLOAD_RESULT = "attempt-failed sent refused delivered";
    const AFTER_FILE = "request json early marker-removed marker-kept end $";
    const NEXT = {
        "banner": "bad-arguments announced",
        "bad-arguments": "$",
        "announced": "busy guard",
        "busy": "$",
        "guard": "request json early body marker-removed marker-kept end $",
        "early": "json",
        "body": "json",
        "json": "proxy-unread proxy-read",
        "octet": "proxy-unread proxy-read",
        "proxy-unread": `${REQUEST_RESULT} ${UPLOAD_RESULT}`,
        "proxy-read": `proxy-none proxy-set ${REQUEST_RESULT} ${UPLOAD_RESULT}`,
        "proxy-none": `${REQUEST_RESULT} ${UPLOAD_RESULT}`,
        "proxy-set": "proxy-used",
        "proxy-used": `${REQUEST_RESULT} ${UPLOAD_RESULT}`,
        "curl-error": "json failed-request",
        "http-error": "json failed-request",
        "no-reply": "json failed-request",
        "reply": "url-size requested json failed-request",
        "url-size": "url failed-request json",
        "url": "requested",
        "requested": "command attempt not-found no-status",
        "command": "attempt not-found no-status",
        "attempt": "octet",
        "attempt-failed": "retry failed-upload",
        "retry": "attempt not-found no-status",
        "sent": "refused delivered",
        "refused": "failed-upload",
        "not-found": "failed-upload",
        "no-status": "failed-upload",
        "delivered": `removed ${AFTER_FILE}`,
        "failed-upload": AFTER_FILE,
        "removed": AFTER_FILE,
        "failed-request": "request-marker-removed $",
        "request-marker-removed": "$",
        "marker-removed": "end",
        "marker-kept": "$",
        "end": "$",
    };
    const FOLLOWS = new Map(Object.entries(NEXT).map(([name, next]) => [name, new Set(next.split(" "))]));
    const BY_NUMBER = {
        578: "guard", 640: "bad-arguments", 1491: "bad-arguments",
        23: "proxy-unread", 27: "proxy-read", 32: "proxy-none", 41: "proxy-none", 57: "proxy-set", 60: "proxy-set",
        289: "proxy-used", 426: "proxy-used", 340: "url-size", 343: "url",
        383: "not-found", 388: "no-status", 394: "attempt", 439: "attempt-failed", 451: "retry",
        458: "sent", 462: "refused", 467: "delivered",
    };
    const BY_TEXT = {
        "##################kdump##################\n": "banner",
        "TFA curl error : %d\n": "curl-error", "TFA http error : %d\n": "http-error",
        "secret from TFA error\n\n": "no-reply", "reply from TFA : %s\n\n": "reply",
    };
    const BY_NAME = {
        "announced": "announced", "busy": "busy", "early": "early", "body": "body", "command": "command",
        "requested": "requested", "request failed": "failed-request", "request marker removed": "request-marker-removed",
        "upload failed": "failed-upload", "removed": "removed", "marker removed": "marker-removed",
        "marker kept": "marker-kept", "end": "end",
    };

    function nameOf(row, number) {
        if (row.text.startsWith("curl_slist_append")) {
            return row.step === "request" ? "json" : "octet";
        }
        return BY_NAME[row.name] || BY_TEXT[row.text] || (row.step ? BY_NUMBER[number] : undefined);
    }

    const escape = (text) => text.replace(/[.*+?^${}()|[\]\\/]/g, "\\$&");

    // A format as a pattern for one line: the function's name and the log id are literal, other
    // conversions are captured.
    function patternOf(row, number) {
        const words = [row.function || null, number === undefined ? null : String(number)];
        const format = row.text.trim().split("\n")[0];
        let rest = format, source = "", texts = 0, numbers = 0;
        for (let m; (m = /%[-0-9.]*(l?[dui]|lu|s|[0-9.]*f)/.exec(rest));) {
            source += escape(rest.slice(0, m.index));
            if (m[1] === "s") {
                const literal = texts++ === 0 ? row.value || words[0] : null;
                source += literal ? escape(literal) : "(.*?)";
            } else {
                source += numbers++ === 0 && words[1] !== null ? `0*${words[1]}` : "(-?[0-9.]+)";
            }
            rest = rest.slice(m.index + m[0].length);
        }
        const whole = (source + escape(rest.trimEnd())).replace(/ (\(\.\*\?\))$/, " ?$1"); // an empty text at the end
        return new RegExp(`^${whole}\\s*$`);
    }

    // How a text is looked up: by its first word, and by the log id behind it where there is one.
    const indexOf = (word, number) => (number === undefined ? word : `${word} ${number}`);

    function compile(table) {
        const known = new Map(), words = new Set();
        const add = (row, number, key) => {
            const entry = { row, number, key, name: nameOf(row, number), pattern: patternOf(row, number) };
            const [first, second] = row.text.trim().replace("%s", row.function || "%s").split(/[\s:]/);
            const word = first.includes("%") ? "" : first;
            const index = word && second === "%d" ? indexOf(word, number) : word;
            known.set(index, [...(known.get(index) || []), entry]);
            word && words.add(word);
        };
        for (const row of table.lines) {
            if (row.numbers) {
                Object.entries(row.numbers).forEach(([key, number]) => add(row, number, key));
            } else {
                add(row, row.number, undefined);
            }
        }
        const longestFirst = [...words].sort((a, b) => b.length - a.length).map(escape).join("|");
        return { known, anywhere: new RegExp(`[^\\w/](${longestFirst})(?![\\w])`) };
    }

    // What a text is, perhaps of several kinds: a list of entries and the values in it, or null.
    function lookUp(compiled, text) {
        let result = compiled.seen.get(text);
        if (result === undefined) {
            const [word, second] = text.split(/[\s:]/, 2);
            result = null;
            for (const index of [indexOf(word, second), word, ""]) {
                const found = (compiled.known.get(index) || []).map((entry) => ({ entry, match: entry.pattern.exec(text) })).filter(({ match }) => match);
                if (found.length > 0) {
                    result = { entry: found[0].entry, values: found[0].match.slice(1), keys: found.map(({ entry }) => entry.key).filter((key) => key) };
                    break;
                }
            }
            compiled.seen.set(text, result);
        }
        return result;
    }

    // Log lines with their stamps; what stands before a stamp is a line of its own.
    function* textLines(log) {
        // eslint-disable-next-line no-control-regex
        const lines = log.replace(/\r\n?/g, "\n").replace(/\x1b\[[0-9;?]*[A-Za-z]|[\0-\x08\x0b\x0c\x0e-\x1f\x7f]/g, "").split("\n");
        let time = null;
        for (let index = 0; index < lines.length; index++) {
            let rest = lines[index].slice(0, LONGEST_LINE);
            for (let m; rest.includes("[") && (m = STAMP.exec(rest)); rest = rest.slice(m.index + m[0].length)) {
                if (rest.slice(0, m.index).trim()) {
                    yield { number: index + 1, time, text: rest.slice(0, m.index).trim() };
                }
                time = m[1];
            }
            yield { number: index + 1, time, text: rest.trimEnd() };
        }
    }

    // Every line with what it is: a known line of the log, part of one, or noise.
    function recognise(compiled, log) {
        const events = [];
        let continued = null; // of a reply, until an empty line
        for (const line of textLines(log)) {
            const text = line.text.trim();
            if (!text) {
                continued = continued && !line.text && continued.name === "reply" ? null : continued;
                continue;
            }
            let found = lookUp(compiled, text);
            if (!found) {
                const at = compiled.anywhere.exec(text);
                found = at && lookUp(compiled, text.slice(at.index + 1));
            }
            if (found) {
                const { entry, values, keys } = found;
                const event = { number: line.number, time: line.time, text, entry, name: entry.name, values, keys, noise: false };
                events.push(event);
                continued = entry.name === "reply" || entry.name === "url" ? event : null;
            } else if (continued && (continued.name === "reply" || /^length \d+$/.test(text))) {
                continued.text += "\n" + text;
                continued = continued.name === "url" ? null : continued;
            } else {
                events.push({ ...line, text, noise: true });
            }
        }
        return events;
    }

    const NO_KIND = new Set();
    const kindOf = (key) => key.split(/[ :]/)[0];

    // Events as runs. Runs that write at the same time share lines that name no kind: then only
    // those that do are believed.
    function runsOf(events) {
        const runs = [];
        let current = null;
        const begin = (event) => {
            current = { events: [], kind: null, ended: false, mixed: false, first: event.number };
            runs.push(current);
        };
        for (const event of events) {
            if (event.noise || !event.entry.row.step) {
                continue;
            }
            const kinds = event.keys.length ? new Set(event.keys.map(kindOf)) : NO_KIND;
            if (event.name === "banner") {
                begin(event);
            } else if (kinds.size > 0 && !(current && (current.kind === null || kinds.has(current.kind)))) {
                const other = [...runs].reverse().find((run) => !run.ended && (run.kind === null || kinds.has(run.kind)));
                if (other && current) {
                    other.mixed = current.mixed = true;
                    current = other;
                } else if (!other) {
                    begin(event);
                }
            } else if (!current || (current.ended && event.name !== "bad-arguments")) {
                begin(event);
            }
            if (event.name === "announced" || (current.kind === null && kinds.size === 1)) {
                current.kind = event.name === "announced" ? event.values[0].trim() : [...kinds][0];
            }
            current.events.push(event);
            current.ended = current.ended || ["end", "busy", "bad-arguments", "request-marker-removed"].includes(event.name);
        }
        return runs;
    }

    const last = (list) => list[list.length - 1];

    // The first place where lines are missing, or null.
    function gapIn(named) {
        if (named.length === 0 || named[0].name !== "banner") {
            return { before: named[0] };
        }
        for (let i = 1; i < named.length; i++) {
            if (!FOLLOWS.get(named[i - 1].name).has(named[i].name)) {
                return { after: named[i - 1], before: named[i] };
            }
        }
        return null;
    }

    const LASTING = new Set(["segmentrace", "dblock", "connfaillog", "debugRamLog", "watchdog", "RAM", "FLASH", "CONFIG"]);

    // Whether the run may have ended behind its last line.
    function isWhole(run, named) {
        const name = last(named).name;
        return FOLLOWS.get(name).has("$") && (!LASTING.has(run.kind) || !FOLLOWS.get(name).has("end"));
    }

    // The files of the run in order, with what became of each.
    function filesOf(run, named) {
        const files = [];
        let file = null;
        const open = () => files.push((file = { key: null, outcome: null, attempts: 0, requests: 0 }));
        for (const event of named) {
            const { name, values } = event;
            if (name === "json" && (!file || file.outcome)) {
                open();
            }
            if (name === "attempt" && (!file || file.outcome)) {
                open();
            }
            if (!file) {
                continue;
            }
            const keys = event.keys.filter((key) => key !== run.kind || event.keys.length === 1);
            file.key = file.key && !keys.includes(file.key) && keys.length ? keys[0] : file.key || keys[0] || null;
            switch (name) {
            case "json": file.requests++; file.why = null; break;
            case "curl-error": file.why = { code: Number(values[0]) }; break;
            case "http-error": file.why = { status: Number(values[0]) }; break;
            case "no-reply": file.why = { text: "the reply was empty" }; break;
            case "reply": file.why = { text: "the reply has no \"message\"" }; break;
            case "url": file.url = values[0]; break;
            case "failed-request": file.outcome = "no-url"; break;
            case "attempt":
                file.attempts++;
                [file.path, file.url, file.bytes, file.flag] = [values[0], values[1], Number(values[2]), Number(values[3])];
                break;
            case "attempt-failed": file.failure = values[0]; break;
            case "sent": file.sentRemoved = true; break;
            case "refused": file.outcome = "refused"; file.status = Number(values[0]); break;
            case "delivered": file.outcome = "delivered"; file.status = 200; break;
            case "not-found": file.outcome = "not-found"; file.path = values[0]; break;
            case "no-status": file.outcome = "not-found"; file.path = values[0]; break;
            case "failed-upload": file.outcome = file.outcome || (run.mixed ? "not-delivered" : "upload-failed"); break;
            case "removed": file.outcome = "delivered"; file.removed = values[0]; break;
            }
        }
        return files;
    }

    // A URL's query is a key to the store, and so is a piece of one; a proxy's settings hold its password.
    const mask = (text) => text.replace(/\?[^\s"'<>]+/g, "?…").replace(/=[^\s"'<>&]{6,}/g, "=…").replace(/[^\s/"@]{0,99}:[^\s/"@]{0,99}@/g, "…@");

    function reasonOf(file) {
        const why = file.why || {};
        if (why.code !== undefined) {
            return `libcurl code ${why.code}: ${CURL_CODES[why.code] || "see libcurl's list of errors"}`;
        }
        return why.status !== undefined ? `the TFA service answered ${why.status}` : why.text || "the reply was no JSON";
    }

    function dumpOf(run, file) {
        return DUMPS[file && file.key] || DUMPS[run.kind] || null;
    }

    function nameOfFile(run, file) {
        const dump = dumpOf(run, file);
        return dump ? dump.source.split("/").pop() : file.path || "one file";
    }

    // Where the dump is now.
    function leftOf(run, file) {
        const dump = dumpOf(run, file);
        if (!dump) {
            return run.kind === "CONFIG" ? "The configuration stays on the device; its copy is in /tmp." : "";
        }
        if (file.outcome === "delivered") {
            return file.removed ? `${file.removed} is removed from the device.`
                : dump.copy && file.key !== "CONFIG ALL" ? `${dump.source} is delivered, but no line tells that it was removed.`
                : file.sentRemoved ? `${file.path} is removed from the device.` : `${file.path} is delivered and may still be there.`;
        }
        if (file.outcome === "refused" && !dump.copy && file.sentRemoved) {
            return `${dump.source} is lost: it was removed when the transfer was complete.`;
        }
        return `${dump.source} is still on the device.`;
    }

    const WAITS = {
        "json": "asks the local service for the proxy", "octet": "asks the local service for the proxy",
        "proxy-unread": "waits for the cloud", "proxy-read": "waits for the cloud", "proxy-none": "waits for the cloud",
        "proxy-set": "waits for the cloud", "proxy-used": "waits for the cloud, through the proxy",
        "curl-error": "waits ten seconds to ask again", "http-error": "waits ten seconds to ask again",
        "no-reply": "waits ten seconds to ask again", "attempt-failed": "waits ten seconds to send again",
        "retry": "is about to send again", "attempt": "is about to send", "requested": "runs the staging command",
        "command": "runs the staging command", "guard": "stages the dump", "announced": "claims its marker",
    };

    const VERDICTS = {
        "delivered": () => "Delivered.",
        "partly": (run) => `Partly delivered: ${run.files.map((file) => `${nameOfFile(run, file)} ${file.outcome === "delivered" ? "was" : "was not"}`).join(", ")}.`,
        "refused": (run, file) => `Refused by the store: status ${file.status}.`,
        "no-url": (run, file) => `No upload URL after ${file.requests} requests: ${reasonOf(file)}.`,
        "upload-failed": (run, file) => `The upload failed ${file.attempts === 1 ? "once" : `${file.attempts} times`}: ${file.failure}.`,
        "not-delivered": () => "Not delivered; another run's lines stand between this one's, so the cause cannot be told.",
        "not-found": (run, file) => file.path.startsWith("cp ") ? "Nothing was sent: this kind copies the file to /tmp only." : `Nothing was sent: ${file.path} cannot be opened.`,
        "nothing": () => "Nothing to send: there is no dump of this kind.",
        "busy": () => "Not started: a marker of this kind exists.",
        "bad-arguments": () => "Not started: wrong arguments.",
        "unfinished": (run) => {
            const name = last(run.named).name;
            return run.retries > 0 && (name === "retry" || name === "attempt-failed" || run.files.length > 0 && last(run.files).attempts > 1)
                ? `Tries again and again: ${last(run.files).failure}.`
                : `Not finished where the log ends: the run ${WAITS[name] || `has written "${last(run.named).text.split("\n")[0]}"`}.`;
        },
        "incomplete": (run) => `Incomplete: lines are missing${run.gap && run.gap.after ? ` behind line ${run.gap.after.number}` : run.gap ? " at the start" : ""}, so nothing is certain.`,
    };

    const NEXT_STEPS = {
        "delivered": "Nothing.", "nothing": "Nothing.",
        "partly": "The next run sends the rest.",
        "refused": "Ask the store's owner for the reason of this status; the next run asks for a new URL.",
        "no-url": "Mend what the reason names; the next run sends the dump.",
        "upload-failed": "Mend what the reason names; the next run sends the dump.",
        "not-delivered": "Read a log of one run at a time.",
        "not-found": "Look for a full or read-only /tmp, or fetch the copy by hand.",
        "busy": "Look for a running kdump. If there is none, remove the marker that the line names.",
        "bad-arguments": "Correct the caller: kdump KIND [ARG].",
        "unfinished": "Look whether the run is still active. If it was ended, remove its marker and start it again.",
        "incomplete": "Take the log again, whole.",
    };

    function outcomeOf(run) {
        const { named, files } = run;
        const names = new Set(named.map((event) => event.name));
        const file = last(files);
        if (run.mixed) {
            return file && file.outcome === "delivered" && file.removed ? "delivered"
                : names.has("failed-request") ? "no-url" : names.has("failed-upload") ? "not-delivered" : "incomplete";
        }
        if (run.gap) {
            return "incomplete";
        }
        if (names.has("bad-arguments") || names.has("busy")) {
            return names.has("busy") ? "busy" : "bad-arguments";
        }
        if (!isWhole(run, named)) {
            return "unfinished";
        }
        if (files.length === 0) {
            return "nothing";
        }
        const outcomes = files.map((each) => each.outcome || "unfinished");
        const good = outcomes.filter((each) => each === "delivered").length;
        return good === outcomes.length ? "delivered" : good > 0 ? "partly" : last(outcomes.filter((each) => each !== "delivered"));
    }

    function judge(run) {
        run.named = run.events.filter((event) => event.name);
        run.gap = run.named.length ? gapIn(run.named) : { before: null };
        run.files = filesOf(run, run.named);
        run.retries = run.files.reduce((sum, file) => sum + Math.max(0, file.requests - 1) + Math.max(0, file.attempts - 1), 0);
        run.outcome = run.named.length ? outcomeOf(run) : "incomplete";
        const decisive = run.files.filter((file) => file.outcome === run.outcome).pop() || last(run.files) || {};
        run.verdict = VERDICTS[run.outcome](run, decisive);
        run.left = run.files.map((file) => file.outcome && run.outcome !== "incomplete" ? leftOf(run, file) : "").filter((text) => text);
        run.next = NEXT_STEPS[run.outcome];
        run.code = decisive.why && decisive.why.code;
        run.status = decisive.status || (decisive.why && decisive.why.status);
        run.url = decisive.url && mask(decisive.url);
        run.bytes = decisive.bytes;
        return run;
    }

    const compiledTables = new WeakMap();

    // All there is to know about a log: every line with what it is, and the runs.
    function read(log, table) {
        if (!compiledTables.has(table)) {
            compiledTables.set(table, compile(table));
        }
        const events = recognise({ ...compiledTables.get(table), seen: new Map() }, log);
        return { events, runs: runsOf(events).map(judge) };
    }

    // One run as plain data.
    function summary(run) {
        const times = run.events.map((event) => event.time).filter((time) => time);
        const plain = {
            kind: run.kind, start: times[0], end: last(times), outcome: run.outcome, verdict: mask(run.verdict), code: run.code,
            status: run.status, url: run.url, bytes: run.bytes, retries: run.retries, left: run.left, next: run.next,
        };
        return Object.fromEntries(Object.entries(plain).map(([key, value]) => [key, value === undefined ? null : value]));
    }

    return { read, summary, mask };
})();

if (typeof module !== "undefined") {
    module.exports = LogReader;
}
