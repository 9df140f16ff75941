// docs/log-reader.html in headless Chromium, driven through chromedriver: pasted, dropped, hovered
// over, masked, hostile and large logs. With a path as PICTURE in the environment it saves what the
// README shows.
"use strict";

const assert = require("assert");
const { spawn } = require("child_process");
const fs = require("fs");
const http = require("http");
const path = require("path");
const test = require("node:test");

const root = path.join(__dirname, "..", "..", "..");
const page = `file://${path.join(root, "docs", "log-reader.html")}`;
const logOf = (name) => {
    const text = fs.readFileSync(path.join(root, "virtual_device", "scenarios", `${name}.expected`), "utf8");
    return text.split(/^== /m).filter((part) => part.startsWith("console")).map((part) => part.slice(part.indexOf("\n") + 1)).join("");
};
const stamped = (log) => log.replace(/^(?=\S)(?!length |\})/gm, "[Fri Nov 20 21:35:07 2026]");

let driver, port, session;

function call(method, where, body) {
    return new Promise((resolve, reject) => {
        const request = http.request({ port, method, path: where, headers: { "Content-Type": "application/json" } }, (reply) => {
            let text = "";
            reply.on("data", (piece) => (text += piece));
            reply.on("end", () => {
                const { value } = JSON.parse(text);
                value && value.error ? reject(new Error(`${value.error}: ${value.message}`)) : resolve(value);
            });
        });
        request.on("error", reject);
        request.end(body ? JSON.stringify(body) : undefined);
    });
}

const run = (script, ...args) => call("POST", `/session/${session}/execute/sync`, { script, args });
const open = () => call("POST", `/session/${session}/url`, { url: page });
const paste = (log) => run("const box = document.getElementById('log'); box.value = arguments[0]; box.dispatchEvent(new Event('input'));", log);
const verdicts = () => run("return [...document.querySelectorAll('.verdict')].map((e) => e.textContent)");

test.before(async () => {
    driver = spawn("chromedriver", ["--port=0"], { stdio: ["ignore", "pipe", "inherit"] });
    port = await new Promise((resolve) => driver.stdout.on("data", (text) => {
        const found = /started successfully on port (\d+)/.exec(text);
        found && resolve(Number(found[1]));
    }));
    const args = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
        "--disable-background-networking", "--host-resolver-rules=MAP * ~NOTFOUND", "--window-size=1000,900"];
    const made = await call("POST", "/session", { capabilities: { alwaysMatch: { "goog:chromeOptions": { args }, "goog:loggingPrefs": { browser: "ALL" } } } });
    session = made.sessionId;
});

test.after(async () => {
    await call("DELETE", `/session/${session}`).catch(() => {});
    driver.kill();
});

test("a pasted log shows its runs, their verdicts and what to do", async () => {
    await open();
    await paste(stamped(logOf("segmentrace") + logOf("upload-refused-500")));
    assert.deepStrictEqual(await verdicts(), ["Delivered.", "Refused by the store: status 500."]);
    assert.strictEqual(await run("return document.querySelectorAll('.run svg .broke').length > 0"), true);
    assert.strictEqual(await run("return document.querySelector('.run svg').getAttribute('role')"), "img");
    assert.match(await run("return document.querySelector('.run.good .time').textContent"), /2026/);
});

test("a dropped file is read", async () => {
    await open();
    await run(`const data = new DataTransfer();
        data.items.add(new File([arguments[0]], "console.log"));
        document.body.dispatchEvent(new DragEvent("drop", { dataTransfer: data, bubbles: true, cancelable: true }));`, logOf("cloud-refuses"));
    for (let tries = 0; (await verdicts()).length === 0; tries++) {
        assert.ok(tries < 100, "nothing is shown");
    }
    assert.match((await verdicts())[0], /^No upload URL after 4 requests: /);
});

test("a line is explained under the pointer and for the keyboard", async () => {
    await open();
    await paste(logOf("upload-refused-500"));
    const line = await run("return [...document.querySelectorAll('li.known')].find((e) => e.textContent.includes(' 462 '))");
    await call("POST", `/session/${session}/actions`, { actions: [{ type: "pointer", id: "mouse", actions: [{ type: "pointerMove", duration: 0, origin: line, x: 0, y: 0 }] }] });
    const tip = "const tip = document.getElementById('tip'); return tip.hidden ? '' : tip.textContent";
    assert.match(await run(tip), /Next: /);
    await run("document.querySelectorAll('li.known')[0].focus()");
    assert.match(await run(tip), /Every run starts/);
    assert.strictEqual(await run("return document.activeElement.getAttribute('aria-describedby')"), "tip");
});

test("a gap is shown in picture and lines, and lines have numbers", async () => {
    await open();
    await paste(logOf("segmentrace").replace(/.*_FILE 394.*\n/, ""));
    assert.match((await verdicts())[0], /between lines 29 and 30\. The others tell: delivered\.$/);
    assert.deepStrictEqual(await run("const gap = document.querySelector('li.gap'); return [gap.previousSibling, gap.nextSibling].map((e) => e.firstChild.textContent)"), ["29", "30"]);
    assert.strictEqual(await run("return document.querySelectorAll('svg .gap').length"), 1);
});

test("keys in URLs are masked until they are asked for", async () => {
    await open();
    await paste(logOf("segmentrace"));
    const visible = "return document.getElementById('runs').textContent.includes('token=')";
    assert.strictEqual(await run(visible), false);
    await run("document.getElementById('show-keys').click()");
    assert.strictEqual(await run(visible), true);
});

test("nothing in a log becomes markup, and nothing is loaded", async () => {
    await open();
    const hostile = "<img src=x onerror='document.title=1'><script>document.title=2</script><svg onload='document.title=3'>";
    await paste(logOf("upload-fails-flag-0").replace(/failed: /g, `failed: ${hostile}`).replace(/KDUMPS_url /, `KDUMPS_url javascript:${hostile}`) + hostile);
    assert.strictEqual(await run("return document.querySelectorAll('#runs img, #runs script').length"), 0);
    assert.strictEqual(await run("return document.title"), "kdump log reader");
    assert.strictEqual(await run("return performance.getEntriesByType('resource').length"), 0);
    const errors = (await call("POST", `/session/${session}/se/log`, { type: "browser" })).filter((entry) => entry.level === "SEVERE");
    assert.deepStrictEqual(errors, []);
});

test("ten megabytes take less than three seconds", async () => {
    await open();
    const one = stamped(logOf("segmentrace"));
    const copies = Math.ceil(10 * 1024 * 1024 / one.length);
    const took = await run(`const log = arguments[0].repeat(arguments[1]), data = new DataTransfer();
        data.items.add(new File([log], "large.log"));
        const start = performance.now();
        document.body.dispatchEvent(new DragEvent("drop", { dataTransfer: data, bubbles: true, cancelable: true }));
        return new Promise((resolve) => {
            new MutationObserver(() => document.body.offsetHeight && resolve(performance.now() - start))
                .observe(document.getElementById("runs"), { childList: true });
        });`, one, copies);
    assert.strictEqual(await run("return document.querySelector('#runs > p').textContent.startsWith(arguments[0] + ' runs')", String(copies)), true);
    assert.ok(took < 3000, `${took} ms`);
});

test("on a telephone nothing is wider than the screen", async () => {
    await call("POST", `/session/${session}/window/rect`, { width: 500, height: 800 });
    await open();
    await run("document.documentElement.style.width = '360px'");
    await paste(logOf("bad-huge-replies"));
    assert.ok((await run("return document.body.scrollWidth")) <= 500);
    assert.ok(await run("return [...document.querySelectorAll('.scroll')].every((e) => e.scrollWidth <= e.clientWidth && e.clientWidth > 0)"));
    await call("POST", `/session/${session}/window/rect`, { width: 1000, height: 900 });
});

test("what the README shows", { skip: !process.env.PICTURE }, async () => {
    await open();
    await paste(stamped(logOf("upload-refused-500")));
    await run("document.getElementById('log').rows = 2; document.querySelectorAll('details')[1].open = false;");
    fs.writeFileSync(process.env.PICTURE, Buffer.from(await call("GET", `/session/${session}/screenshot`), "base64"));
});
