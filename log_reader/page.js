// The page around reader.js. Text of a log reaches the document through textContent only.
"use strict";

(() => {
    const LINES_AT_ONCE = 400;
    const STEPS_DRAWN = 200;
    const LARGEST_IN_BOX = 200000;
    const TONE = { delivered: "good", nothing: "good", incomplete: "doubt", unfinished: "doubt", busy: "doubt" };
    const LANES = ["device", "local service", "proxy", "TFA", "store"];
    const BROKEN = new Set(["curl-error", "http-error", "no-reply", "attempt-failed", "refused", "not-found", "no-status",
        "failed-request", "failed-upload", "proxy-unread", "busy", "bad-arguments", "marker-kept"]);

    const byId = (id) => document.getElementById(id);
    let runs = [];

    function make(tag, properties = {}, ...children) {
        const element = Object.assign(document.createElement(tag), properties);
        element.append(...children);
        return element;
    }

    function draw(tag, attributes, text) {
        const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
        Object.entries(attributes).forEach(([name, value]) => element.setAttribute(name, value));
        element.textContent = text || "";
        return element;
    }

    const shown = (text) => (byId("show-keys").checked ? text : LogReader.mask(text));
    const clock = (event) => (event.time ? event.time.slice(11, 19) : "");

    // From which lane to which a line speaks; a line of the device's own stays in its lane.
    function wayOf(event, proxied) {
        switch (event.name) {
        case "proxy-unread": return [1, 0, "unreadable"];
        case "proxy-none": return [1, 0, "none"];
        case "proxy-set": return [1, 0, "this one"];
        case "json": case "octet": return [0, 1, "which proxy?"];
        case "curl-error": return [proxied ? 2 : 3, 0, `no reply: code ${event.values[0]}`];
        case "http-error": return [3, 0, `status ${event.values[0]}`];
        case "no-reply": return [3, 0, "empty reply"];
        case "reply": return [3, 0, "reply"];
        case "attempt": return [0, 4, `PUT, ${Number(event.values[2]).toLocaleString("en")} bytes`];
        case "attempt-failed": return [proxied ? 2 : 4, 0, event.values[0]];
        case "refused": return [4, 0, `status ${event.values[0]}`];
        case "delivered": return [4, 0, "status 200"];
        case "proxy-used": return [0, 2, "through the proxy"];
        case "announced": return [0, 0, `kdump ${event.values[0]}`];
        case "busy": return [0, 0, "marker exists"];
        case "retry": return [0, 0, "ten seconds later"];
        case "removed": return [0, 0, `${event.values[0].split("/").pop()} removed`];
        case "not-found": case "no-status": return [0, 0, "file cannot be opened"];
        case "failed-request": return [0, 0, "gives up: no URL"];
        case "marker-kept": return [0, 0, "marker stays"];
        case "end": return [0, 0, "end"];
        default: return null;
        }
    }

    function sequence(run) {
        const narrow = innerWidth < 640; // a telephone shows all lanes, too
        const x = (lane) => (narrow ? 70 + lane * 67 : 130 + lane * 145);
        const gaps = new Set(run.mixed ? [] : run.gaps.map((gap) => gap.before));
        const steps = [];
        let proxied = false;
        for (const event of run.named) {
            gaps.has(event) && steps.push({ event: { ...event, time: null }, way: null });
            proxied = event.name === "json" || event.name === "octet" ? false : proxied || event.name === "proxy-used";
            const way = wayOf(event, proxied);
            if (way && steps.length < STEPS_DRAWN) {
                steps.push({ event, way });
            }
        }
        const height = 50 + steps.length * 26;
        const picture = draw("svg", { class: narrow ? "narrow" : "", viewBox: `0 0 ${narrow ? 365 : 790} ${height}`, role: "img", "aria-label": `Sequence of the run: ${run.verdict}` });
        picture.append(draw("title", {}, LogReader.mask(run.verdict)));
        LANES.forEach((name, lane) => picture.append(draw("text", { x: x(lane), y: 16, "text-anchor": "middle" }, name),
            draw("line", { class: "lane", x1: x(lane), x2: x(lane), y1: 24, y2: height })));
        steps.forEach(({ event, way }, index) => {
            const y = 44 + index * 26;
            if (!way) {
                picture.append(draw("rect", { class: "gap", x: x(0) - 8, y: y - 11, width: x(4) - x(0) + 16, height: 20 }),
                    draw("text", { x: x(2), y: y + 4, "text-anchor": "middle" }, "lines missing or damaged"));
                return;
            }
            const [from, to, label] = way;
            const broke = BROKEN.has(event.name) ? " broke" : "";
            picture.append(draw("text", { x: 4, y: y + 4 }, clock(event)));
            if (from === to) {
                picture.append(draw("circle", { class: `step${broke}`, cx: x(from), cy: y, r: 4 }),
                    draw("text", { class: broke.trim(), x: x(from) + 10, y: y + 4 }, shown(label).slice(0, 60)));
                return;
            }
            const tip = x(to) + (to > from ? -7 : 7);
            picture.append(draw("path", { class: `step${broke}`, d: `M${x(from)} ${y} H${x(to)} M${tip} ${y - 4} L${x(to)} ${y} L${tip} ${y + 4}` }),
                draw("text", { class: broke.trim(), x: (x(from) + x(to)) / 2, y: y - 4, "text-anchor": "middle" }, shown(label).slice(0, 48)));
        });
        return make("div", { className: "scroll" }, picture);
    }

    function explain(row) {
        return [row.when, row.meaning, row.next && `Next: ${row.next}`].filter((text) => text).map((text) => make("p", { textContent: text.replace(/`/g, "") }));
    }

    function lineOf(event) {
        const item = make("li", {}, make("span", { className: "number", textContent: event.number }), `${clock(event)} ${shown(event.text)}`.trim());
        if (event.noise) {
            item.className = "noise";
            return item;
        }
        item.className = `known${BROKEN.has(event.name) ? " broke" : ""}`;
        item.tabIndex = 0;
        const show = () => {
            const tip = byId("tip");
            const place = item.getBoundingClientRect();
            tip.replaceChildren(...explain(event.entry.row));
            tip.hidden = false;
            tip.style.left = `${Math.max(4, Math.min(place.left + 20, innerWidth - tip.offsetWidth - 8)) + scrollX}px`;
            tip.style.top = `${place.bottom + scrollY + 2}px`;
            item.setAttribute("aria-describedby", "tip");
        };
        const hide = () => {
            byId("tip").hidden = true;
            item.removeAttribute("aria-describedby");
        };
        item.onmouseenter = item.onfocus = item.onclick = show;
        item.onmouseleave = item.onblur = hide;
        return item;
    }

    function linesOf(run) {
        const list = make("ol", { className: "lines" });
        const box = make("div", {}, make("p", { className: "time", textContent: "Point at a line or tap it to see what it means. Red: here it broke. Grey: not kdump's line, or a damaged one." }), list);
        const gaps = new Set(run.mixed ? [] : run.gaps.map((gap) => gap.after));
        const gap = () => make("li", { className: "gap", textContent: "lines are missing or damaged here" });
        const itemsOf = (event) => (gaps.has(event) ? [lineOf(event), gap()] : [lineOf(event)]);
        run.gaps.length > 0 && !run.gaps[0].after && !run.mixed && list.append(gap());
        let next = 0;
        const more = make("button", { type: "button", textContent: "More lines" });
        more.onclick = () => {
            list.append(...run.lines.slice(next, next + LINES_AT_ONCE).flatMap(itemsOf));
            next += LINES_AT_ONCE;
            more.hidden = next >= run.lines.length;
        };
        more.onclick();
        box.append(more);
        return box;
    }

    // A part that is built when it is opened for the first time.
    function lazy(title, build, open) {
        const details = make("details", { open }, make("summary", { textContent: title }));
        const fill = () => details.open && details.childElementCount === 1 && details.append(build());
        details.ontoggle = fill;
        fill();
        return details;
    }

    function cardOf(run, index, all) {
        const last = run.events[run.events.length - 1];
        return make("article", { className: `run ${TONE[run.outcome] || "bad"}` },
            make("h2", { textContent: `${index + 1}. ${run.kind ? `kdump ${run.kind}` : "kdump"}` }),
            make("p", { className: "time", textContent: run.events[0].time ? `${run.events[0].time} to ${last.time}` : "without time stamps" }),
            make("p", { className: "verdict", textContent: shown(run.verdict) }),
            ...run.left.map((text) => make("p", { textContent: shown(text) })),
            make("p", { textContent: `What to do: ${run.next}` }),
            lazy("Sequence", () => sequence(run), all <= 3),
            lazy(`Lines (${run.lines.length})`, () => linesOf(run), all === 1));
    }

    function show() {
        const cards = runs.slice(0, LINES_AT_ONCE).map((run, index) => cardOf(run, index, runs.length));
        const rest = runs.length - cards.length;
        byId("runs").replaceChildren(
            make("p", { textContent: byId("log").value.trim() || runs.length ? `${runs.length} ${runs.length === 1 ? "run" : "runs"}${rest > 0 ? `, the first ${cards.length} shown` : ""}` : "" }), ...cards);
    }

    function take(log) {
        const { events, runs: found } = LogReader.read(log, TABLE);
        runs = found;
        // Noise belongs to the run whose lines stand before it.
        const runOf = new Map(runs.flatMap((run) => run.events.map((event) => [event, run])));
        let run = runs[0];
        runs.forEach((each) => (each.lines = []));
        for (const event of events) {
            run = runOf.get(event) || run;
            run && run.lines.push(event);
        }
        show();
    }

    // A large log is shown by its size: laying it out in the box would take longer than reading it.
    function showInBox(log, name) {
        const text = log.length > LARGEST_IN_BOX ? `${name}: ${log.length.toLocaleString("en")} characters` : log;
        byId("log").value !== text && (byId("log").value = text);
    }

    function takeText(log, name) {
        showInBox(log, name);
        take(log);
    }

    const open = async (file) => takeText(await file.text(), file.name);

    byId("log").oninput = () => takeText(byId("log").value, "pasted");
    byId("file").onchange = (event) => event.target.files[0] && open(event.target.files[0]);
    byId("show-keys").onchange = show;
    byId("clear").onclick = () => {
        byId("log").value = byId("file").value = "";
        take("");
    };
    document.onkeydown = (event) => event.key === "Escape" && (byId("tip").hidden = true);
    document.ondragover = (event) => {
        event.preventDefault();
        document.body.classList.add("dragging");
    };
    document.ondragleave = () => document.body.classList.remove("dragging");
    document.ondrop = (event) => {
        event.preventDefault();
        document.body.classList.remove("dragging");
        const file = event.dataTransfer.files[0];
        file ? open(file) : takeText(event.dataTransfer.getData("text"), "dropped");
    };
})();
