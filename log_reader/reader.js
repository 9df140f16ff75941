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

    const MARKERS = {
        segmentrace: "segmentrace", dblock: "dblocktrace", upgradefailstate: "upgradefail_state", connfaillog: "conn_fail_log",
        debugRamLog: "debug_info", watchdog: "watchdog", RAM: "dbg_upload", FLASH: "dbg_upload", CONFIG: "all_config",
    };
    const own = (object, key) => (Object.hasOwn(object, key) ? object[key] : undefined);

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

    // The places where lines are missing or damaged.
    function gapsIn(named) {
        return named.map((before, index) => ({ after: named[index - 1], before }))
            .filter(({ after, before }) => (after ? !FOLLOWS.get(after.name).has(before.name) : before.name !== "banner"));
    }

    const LASTING = new Set(["segmentrace", "dblock", "connfaillog", "debugRamLog", "watchdog", "RAM", "FLASH", "CONFIG"]);

    // Whether the run may have ended behind its last line.
    function isWhole(run, named) {
        const name = last(named).name;
        return FOLLOWS.get(name).has("$") && (!LASTING.has(run.kind) || !FOLLOWS.get(name).has("end"));
    }

    // Lines with which the next file begins, and lines that tell of one even when those are missing.
    const BEGINS_FILE = new Set(["json", "attempt", "refused", "delivered", "not-found", "no-status"]);
    const ENDS_FILE = new Set(["url", "requested", "attempt-failed", "retry", "sent", "failed-request", "failed-upload", "removed"]);

    // The files of the run in order, with what became of each.
    function filesOf(run, named) {
        const files = [];
        let file = null;
        const open = () => files.push((file = { key: null, outcome: null, attempts: 0, requests: 0 }));
        for (const event of named) {
            const { name, values } = event;
            const key = event.keys.find((each) => own(DUMPS, each) && kindOf(each) === run.kind);
            if (file ? file.outcome && (BEGINS_FILE.has(name) || (key && file.key && key !== file.key)) : BEGINS_FILE.has(name) || ENDS_FILE.has(name)) {
                open();
            }
            if (!file) {
                continue;
            }
            file.key = key || file.key;
            switch (name) {
            case "json": file.requests++; file.why = run.gaps.length > 0 ? file.why : null; file.proxy = null; break;
            case "octet": file.proxy = null; break;
            case "proxy-used": file.proxy = mask(values[0]); break;
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
            return `libcurl code ${why.code}: ${own(CURL_CODES, why.code) || "see libcurl's list of errors"}`;
        }
        return why.status !== undefined ? `the TFA service answered ${why.status}` : why.text || "the reply was no JSON";
    }

    function dumpOf(run, file) {
        return own(DUMPS, file.key) || own(DUMPS, run.kind) || Object.values(DUMPS).find(({ source, copy }) => file.path && (source === file.path || copy === file.path));
    }

    function nameOfFile(run, file) {
        const dump = dumpOf(run, file);
        return dump ? dump.source.split("/").pop() : file.path || "one file";
    }

    // Where the dump is now; for a run that has not ended, where it was.
    function leftOf(run, file) {
        const dump = dumpOf(run, file);
        if (!dump) {
            return run.kind === "CONFIG" ? "The configuration stays on the device; its copy is in /tmp." : "";
        }
        if (file.outcome === "delivered") {
            return file.removed ? `${file.removed} is removed from the device.`
                : dump.copy && file.key !== "CONFIG ALL" ? `${dump.source} is delivered, but no line tells that it was removed.`
                : file.sentRemoved ? `${file.path || dump.source} is removed from the device.` : `${file.path || dump.source} is delivered and may still be there.`;
        }
        if (!dump.copy && file.sentRemoved) {
            return file.outcome ? `${dump.source} is lost: it was removed when the transfer was complete.`
                : `${dump.source} was removed when the transfer was complete; no line tells whether the store took it.`;
        }
        const known = ["no-url", "not-found"].includes(file.outcome) || (file.outcome && dump.copy);
        return run.gaps.length > 0 && !known ? `No line tells that ${dump.source} was removed.`
            : `${dump.source} ${run.outcome === "unfinished" ? "was still on the device then" : "is still on the device"}.`;
    }

    const DOING = {
        "json": "asking the local service for the proxy", "octet": "asking the local service for the proxy",
        "curl-error": "waiting ten seconds to ask again", "http-error": "waiting ten seconds to ask again",
        "no-reply": "waiting ten seconds to ask again", "attempt-failed": "waiting ten seconds to send again",
        "retry": "about to send again", "attempt": "about to send", "requested": "running the staging command",
        "command": "running the staging command", "guard": "staging the dump", "announced": "claiming its marker",
    };

    // What an unfinished run was doing at its last line.
    function doingOf(run) {
        const line = last(run.named), file = last(run.files);
        if (file && !file.outcome && file.attempts > 1) {
            return `uploading again and again, ${file.attempts} times so far: ${file.failure}`;
        }
        if (/^proxy-/.test(line.name)) {
            const answer = file.attempts > 0 ? `the store's answer to ${file.bytes.toLocaleString("en")} bytes` : "the TFA service's answer";
            return `waiting for ${answer}${throughProxy(file)}`;
        }
        return own(DOING, line.name) || `"${line.text.split("\n")[0]}"`;
    }

    const throughProxy = (file) => (file.proxy ? ` through the proxy ${file.proxy}` : "");
    const times = (count) => (count === 1 ? "once" : `${count} times`);

    // A file's result as part of a sentence, behind its name where a run has several.
    function resultOf(run, file) {
        const text = file.outcome ? VERDICTS[file.outcome](run, file) : file.failure ? VERDICTS["upload-failed"](run, file) : "no result.";
        return `${run.kind === "dblock" ? `${nameOfFile(run, file)}: ` : ""}${text[0].toLowerCase()}${text.slice(1, -1)}`;
    }

    function placeOf({ gaps: [{ after, before }, ...more] }) {
        return (after ? `between lines ${after.number} and ${before.number}` : `before line ${before.number}`) +
            (more.length > 0 ? `, and in ${more.length} more place${more.length > 1 ? "s" : ""}` : "");
    }

    const VERDICTS = {
        "delivered": () => "Delivered.",
        "partly": (run) => `Partly delivered: ${run.files.map((file) => resultOf(run, file)).join("; ")}.`,
        "refused": (run, file) => `Refused by the store: status ${file.status}.`,
        "no-url": (run, file) => run.gaps.length === 0 ? `No upload URL after ${file.requests} requests${throughProxy(file)}: ${reasonOf(file)}.`
            : file.why ? `No upload URL${throughProxy(file)}: ${reasonOf(file)}.` : "No upload URL, and no line tells why.",
        "upload-failed": (run, file) => !file.failure ? "The upload failed, and no line tells why."
            : `The upload failed${throughProxy(file)}${run.gaps.length === 0 ? ` ${times(file.attempts)}` : `, ${times(file.attempts || 1)} or more`}: ${file.failure}.`,
        "not-delivered": () => "Not delivered; another run's lines stand between this one's, so the cause cannot be told.",
        "not-found": (run, file) => file.path.startsWith("cp ") ? "Nothing was sent: this kind copies the file to /tmp only." : `Nothing was sent: ${file.path} cannot be opened.`,
        "nothing": () => "Nothing to send: there is no dump of this kind.",
        "busy": () => "Not started: a marker of this kind exists.",
        "bad-arguments": () => "Not started: wrong arguments.",
        "unfinished": (run) => {
            const line = last(run.named).number;
            const end = run.cut ? `The log is cut in line ${run.cut}` : run.later ? `Not finished when the next run of its kind began at line ${run.later.first}` : `Not finished at its last line, ${line}`;
            return `${end}; last step: ${doingOf(run)}.`;
        },
        "incomplete": (run) => {
            const told = run.files.filter((file) => file.outcome || file.failure).map((file) => resultOf(run, file));
            const where = run.mixed ? "lines of several runs are mixed" : run.gaps.length > 0 ? `lines are missing or damaged ${placeOf(run)}` : "nothing but single lines is left";
            return `Incomplete: ${where}. ${told.length > 0 ? `The others tell: ${told.join("; ")}` : "The others tell no result"}.`;
        },
    };

    const HELPS = {
        5: "Test the proxy", 6: "Check the device's name servers", 7: "Check the line, its firewall and the cloud", 28: "Check the line, its firewall and the cloud",
        56: "Check the line and the cloud", 58: "Put CRT and KEY into the folder that kdump starts in", 97: "Test the proxy",
        403: "The URL has expired or was used", 413: "The dump is too large for the store: ask its owner",
    };

    // What helps against the failure of a file; the next run sends its dump.
    function helpOf(file) {
        const { code, status = file.status } = file.why || {};
        const cause = file.outcome === "refused" ? file.status : code || status;
        return file.proxy && file.outcome !== "refused" ? "Test the proxy first" : own(HELPS, cause)
            || (cause >= 500 ? `The ${file.outcome === "refused" ? "store" : "service"} is in trouble` : cause >= 400 ? "Ask the cloud's owner for the reason of this status; check certificate and endpoint" : file.why || file.failure ? "Mend what the reason names" : "The log does not tell what to mend");
    }

    const again = (run, file) => `${helpOf(file)}; the next run ${file.outcome === "refused" ? "asks for a new URL" : "sends the dump"}.`;
    const NEXT_STEPS = {
        "delivered": () => "Nothing.", "nothing": () => "Nothing.",
        "partly": again, "no-url": again, "upload-failed": again, "refused": again,
        "not-delivered": () => "Read a log of one run at a time.",
        "not-found": () => "Look for a full or read-only /tmp, or fetch the copy by hand.",
        "busy": () => "Look for a running kdump. If there is none, remove the marker that the line names.",
        "bad-arguments": () => "Correct the caller: kdump KIND [ARG].",
        "unfinished": (run) => run.cut ? "Take the log again, to its end."
            : run.later ? "See the next run for the dump. The marker was gone by then: the device restarted, or somebody removed it."
            : `Take the log again: the run may go on. If no kdump runs, remove ${run.marker} and start it again.`,
        "incomplete": (run, file) => !file.outcome || run.mixed ? "Look for a whole copy of the log, or log the next run."
            : file.outcome === "delivered" ? "Look whether the store has the dump." : NEXT_STEPS[file.outcome](run, file),
    };

    function outcomeOf(run) {
        const { named, files } = run;
        const names = new Set(named.map((event) => event.name));
        const file = last(files);
        if (run.mixed) {
            return file && file.outcome === "delivered" && file.removed ? "delivered"
                : names.has("failed-request") ? "no-url" : names.has("failed-upload") ? "not-delivered" : "incomplete";
        }
        if (run.gaps.length > 0) {
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

    function judge(run, index, runs) {
        run.named = run.events.filter((event) => event.name);
        run.gaps = gapsIn(run.named);
        run.files = filesOf(run, run.named);
        run.marker = own(MARKERS, run.kind) ? `/tmp/kdump_process_${MARKERS[run.kind]}` : "its marker";
        run.retries = run.files.reduce((sum, file) => sum + Math.max(0, file.requests - 1) + Math.max(0, file.attempts - 1), 0);
        run.outcome = run.named.length ? outcomeOf(run) : "incomplete";
        run.later = run.outcome === "unfinished" ? nextOfFamily(run, runs.slice(index + 1)) : undefined;
        const failed = run.files.filter((file) => file.outcome !== "delivered").pop();
        const decisive = (run.outcome === "delivered" ? null : failed) || last(run.files) || {};
        run.verdict = VERDICTS[run.outcome](run, decisive);
        run.left = run.files.map((file) => leftOf(run, file)).filter((text) => text);
        run.next = NEXT_STEPS[run.outcome](run, decisive);
        run.code = decisive.why && decisive.why.code;
        run.status = decisive.status || (decisive.why && decisive.why.status);
        run.url = decisive.url && mask(decisive.url);
        run.bytes = decisive.bytes;
        return run;
    }

    // The next run with this one's marker that found no marker, so that this one had lost it.
    function nextOfFamily(run, others) {
        return others.find((other) => own(MARKERS, other.kind) === own(MARKERS, run.kind) && other.events.some((event) => event.name === "guard"));
    }

    const compiledTables = new WeakMap();

    // All there is to know about a log: every line with what it is, and the runs.
    function read(log, table) {
        if (!compiledTables.has(table)) {
            compiledTables.set(table, compile(table));
        }
        const events = recognise({ ...compiledTables.get(table), seen: new Map() }, log);
        const runs = runsOf(events), end = last(events);
        if (runs.length > 0 && end.noise && !/\n\s*$/.test(log)) {
            last(runs).cut = end.number;
        }
        return { events, runs: runs.map(judge) };
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
