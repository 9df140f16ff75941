// docs/cloud.md shows the bytes that kdump sends, and what it does after each redirect. Runs on the
// virtual device.
"use strict";

const assert = require("assert");
const { execFile } = require("child_process");
const fs = require("fs");
const path = require("path");
const { test, before, after } = require("node:test");
const tls = require("tls");

const PORT = 8443;
const DUMP = "/mnt/data/iss_config/segmentrace.txt";
const page = fs.readFileSync(path.join(__dirname, "..", "..", "..", "docs", "cloud.md"), "utf8");

// The indented block behind a marker, as sent.
function block(text, name) {
    const lines = text.split(`<!-- ${name} -->\n`)[1].split("<!--")[0].trimEnd().split("\n").slice(1);
    return lines.map((line) => line.replace(/^ {4}/, "")).join("\r\n");
}

const requests = [];
let answers = {};  // method -> replies to come, before the usual one

function reply(head, body = "") {
    return `HTTP/1.1 ${head}\r\nContent-Length: ${Buffer.byteLength(body)}\r\n\r\n${body}`;
}

function usual(method) {
    const url = `https://localhost:${PORT}/up/1?key=1`;
    return reply("200 OK", method === "POST" ? JSON.stringify({ message: "OK", upload_url: url }) : "");
}

// Takes whole requests from the connection's bytes so far; what is left is returned.
function answer(socket, bytes) {
    const end = bytes.indexOf("\r\n\r\n") + 4;
    if (end < 4) {
        return bytes;
    }
    const head = bytes.toString("latin1", 0, end);
    const length = Number(/^Content-Length: (\d+)/m.exec(head)?.[1] ?? 0);
    if (/^Expect:/m.test(head) && bytes.length === end) {
        socket.write("HTTP/1.1 100 Continue\r\n\r\n");
    }
    if (bytes.length < end + length) {
        return bytes;
    }
    const method = head.split(" ")[0];
    requests.push({ head, method, body: bytes.toString("latin1", end, end + length),
        protocol: socket.alpnProtocol, client: socket.getPeerCertificate().subject?.CN });
    socket.write((answers[method] || []).shift() || usual(method));
    return answer(socket, bytes.subarray(end + length));
}

const identity = { cert: fs.readFileSync("CRT"), key: fs.readFileSync("KEY") };  // any will do
const server = tls.createServer({ ...identity, requestCert: true, rejectUnauthorized: false,
    ALPNProtocols: ["h2", "http/1.1"] }, (socket) => {
    let bytes = Buffer.alloc(0);
    socket.on("data", (piece) => { bytes = answer(socket, Buffer.concat([bytes, piece])); });
    socket.on("error", () => {});
});

before(() => new Promise((ready) => {
    fs.writeFileSync("/tmp/app/cloud_tmp/KDUMPS_file", `https://localhost:${PORT}/dev/tfaapi/kdumps`);
    server.listen(PORT, "127.0.0.1", ready);
}));
after(() => server.close());

const dump = fs.readFileSync(DUMP);

// The requests of one run against a cloud that first gives these answers.
async function run(first = {}) {
    fs.writeFileSync(DUMP, dump);
    requests.length = 0;
    answers = first;
    await new Promise((ended) => execFile("kdump", ["segmentrace"], { maxBuffer: 1 << 24 }, ended));
    return requests.slice();
}

const without_host = (text) => text.replace(/^Host: .*(?=\r)/m, "Host: ");

// Names of the requests that differ from a page's text.
function differences(text, sent) {
    return [["request: url", 0, 1], ["request: upload", 1, 0]].filter(([name, index, with_body]) => {
        const shown = block(text, name) + (with_body ? "" : "\r\n\r\n");
        const real = sent[index].head + (with_body ? sent[index].body : "");
        return without_host(shown) !== without_host(real);
    }).map(([name]) => name);
}

test("the page shows both requests byte by byte", async () => {
    const sent = await run();
    assert.strictEqual(sent.length, 2);
    assert.deepStrictEqual(differences(page, sent), []);
    assert.ok(sent.every(({ protocol, client }) => protocol === "http/1.1" && client === "virtual-device"));
    assert.strictEqual(fs.existsSync(DUMP), false);
    for (const [planted, name] of [["Accept: */*", "request: url"], ["Expect: 100-continue", "request: upload"]]) {
        const at = page.indexOf(planted, page.indexOf(`<!-- ${name} -->`));
        const changed = page.slice(0, at) + "X" + page.slice(at);
        assert.deepStrictEqual(differences(changed, sent), [name]);
    }
});

test("the reply on the page is one, with its length", () => {
    const [head, body] = block(page, "reply: url").split("\r\n\r\n");
    assert.strictEqual(Number(/Content-Length: (\d+)/.exec(head)[1]), Buffer.byteLength(body));
    assert.strictEqual(JSON.parse(body).message, "OK");
});

// The promises of the table of redirects: status -> [POST with body, PUT with dump].
const promised = new Map();
for (const [, codes, post, put] of page.split("\n## Redirects\n")[1].split("\n## ")[0]
    .matchAll(/^\| (3[\d, ]+) \| (.*?) \| (.*?) \|$/gm)) {
    const cells = [post, put].map((cell) => (cell.startsWith("as 301") ? promised.get(301)[0] : !/without (its body|the dump)/.test(cell)));
    codes.split(", ").forEach((code) => promised.set(Number(code), cells));
}
assert.deepStrictEqual([...promised.keys()].sort(), [301, 302, 303, 307, 308]);

for (const [code, [post_keeps, put_keeps]] of promised) {
    test(`${code} does what the page says`, async () => {
        const to = (target) => reply(`${code} Moved\r\nLocation: https://localhost:${PORT}${target}`);
        const sent = await run({ POST: [to("/moved")], PUT: [to("/up/moved")] });
        assert.deepStrictEqual(sent.map(({ method }) => method), ["POST", "POST", "PUT", "PUT"]);
        const whole = [sent[1].body === sent[0].body, sent[3].body === dump.toString("latin1")];
        assert.deepStrictEqual(whole, [post_keeps, put_keeps]);
        assert.strictEqual(/^Content-Length/m.test(sent[1].head), post_keeps);
        assert.strictEqual(fs.existsSync(DUMP), false);
    });
}

for (const [status, times] of [[201, 1], [204, 1], [403, 1], [417, 2]]) {
    test(`an upload answered ${status} is sent ${times} times at most, and the dump stays`, async () => {
        const sent = await run({ PUT: Array(3).fill(reply(`${status} Status`)) });
        assert.ok(sent.length - 1 <= times, `${sent.length}`);
        assert.deepStrictEqual(fs.readFileSync(DUMP), dump);
    });
}
