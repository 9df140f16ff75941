// docs/openapi.json describes what the library asks for, and what the virtual device answers. Runs
// on the virtual device.
"use strict";

const assert = require("assert");
const { execFileSync } = require("child_process");
const fs = require("fs");
const path = require("path");
const { test } = require("node:test");

const root = path.join(__dirname, "..", "..", "..");
const text = fs.readFileSync(path.join(root, "docs", "openapi.json"), "utf8");
const METHODS = ["get", "post", "put", "patch", "delete"];

function resolved(document, node) {
    return node.$ref ? node.$ref.slice(2).split("/").reduce((at, name) => at[name], document) : node;
}

// Where a value differs from a schema: "what at where", one each.
function mismatches(document, unresolved, value, at = "body") {
    const schema = resolved(document, unresolved);
    const fits = { object: value !== null && typeof value === "object" && !Array.isArray(value), string: typeof value === "string",
        integer: Number.isInteger(value), boolean: typeof value === "boolean" };
    assert.ok(schema.type in fits, `${at}: a type that this test does not know: ${schema.type}`);
    if (!fits[schema.type]) {
        return [`no ${schema.type} at ${at}`];
    }
    const wrong = (schema.enum && !schema.enum.includes(value)) || value < schema.minimum || value.length < schema.minLength ||
        (schema.pattern && !new RegExp(schema.pattern).test(value));
    const missing = (schema.required || []).filter((name) => !(name in value)).map((name) => `no ${name} at ${at}`);
    const inner = Object.entries(schema.properties || {}).filter(([name]) => name in value)
        .flatMap(([name, property]) => mismatches(document, property, value[name], `${at}.${name}`));
    return [...(wrong ? [`wrong value at ${at}`] : []), ...missing, ...inner];
}

// The reply of the virtual device as { status, body }.
function ask(method, url, { body, type = "application/json", certificate = true } = {}) {
    const options = ["-sk", "-w", "\n%{http_code}", "-X", method.toUpperCase(), url];
    const sent = body === undefined ? [] : ["-H", `Content-Type: ${type}`, "--data-binary", body];
    const shown = certificate ? ["--cert", "CRT", "--key", "KEY"] : [];
    const reply = execFileSync("curl", [...options, ...sent, ...shown], { encoding: "utf8" });
    const end = reply.lastIndexOf("\n");
    return { status: reply.slice(end + 1), body: reply.slice(0, end) };
}

// A body is as one of its examples; wrong ones lack a member, or have one of another type.
function bodies(operation) {
    const content = operation.requestBody?.content["application/json"];
    return Object.values(content?.examples || {}).map(({ value }) => value);
}
function spoilt(body) {
    const [name] = Object.keys(body);
    return [{ other: body[name] }, { [name]: 7 }, [], 7];
}

function check_reply(document, operation, reply, wanted) {
    const answer = operation.responses[reply.status];
    if (!answer || !wanted(reply.status)) {
        return [`status ${reply.status}`];
    }
    const schema = answer.content?.["application/json"].schema;
    return schema ? mismatches(document, schema, JSON.parse(reply.body)) : [];
}

function target_of(document, place, item) {
    const base = (item.servers || document.servers)[0].url;
    const upload = () => JSON.parse(ask("post", target_of(document, "/dev/tfaapi/kdumps", document.paths["/dev/tfaapi/kdumps"]),
        { body: '{"filename":"x y.txt"}' }).body).upload_url;
    if (!place.includes("{")) {
        return base + place;
    }
    const url = upload();
    const form = new RegExp("^" + base + place.replace(/\{\w+\}/g, "[^/?]+") + "(\\?.*)?$");
    return form.test(url) ? url : `${base}/not-as-described`;
}

function check_operation(document, place, item, method) {
    const operation = item[method];
    const good = (status) => status === "200";
    const url = target_of(document, place, item);
    const found = [];
    const examples = bodies(operation);
    const binary = operation.requestBody && examples.length === 0;
    const sent = binary ? [{ body: "dump", type: "application/octet-stream" }]
        : examples.length > 0 ? examples.map((body) => ({ body: JSON.stringify(body) })) : [{}];
    found.push(...sent.flatMap((request) => check_reply(document, operation, ask(method, url, request), good)));
    for (const body of examples) {
        const schema = operation.requestBody.content["application/json"].schema;
        found.push(...mismatches(document, schema, body));
        for (const wrong of spoilt(body)) {
            if (mismatches(document, schema, wrong).length === 0) {
                found.push(`allows ${JSON.stringify(wrong)}`);
            }
            found.push(...check_reply(document, operation, ask(method, url, { body: JSON.stringify(wrong) }), (status) => !good(status)));
        }
    }
    if (binary) {  // a URL works once
        found.push(...check_reply(document, operation, ask(method, url, sent[0]), (status) => !good(status)));
    }
    return found.map((what) => `${method} ${place}: ${what}`);
}

function library_uses() {
    const folders = ["cloud_http", "device", "state", "kdump"];
    const sources = folders.flatMap((folder) => fs.readdirSync(path.join(root, folder))
        .filter((name) => name.endsWith(".cpp")).map((name) => fs.readFileSync(path.join(root, folder, name), "utf8")));
    return new Set([...sources.join("").matchAll(/LOCAL_SERVICE "([^"]+)"/g)].map(([, place]) => `/api/${place}`));
}

// All that is wrong with a description; `only` limits it to one path.
function faults(document, only) {
    const described = Object.keys(document.paths).filter((place) => place.startsWith("/api/"));
    const used = [...library_uses()];
    const found = [...used.filter((place) => !described.includes(place)).map((place) => `${place} is missing`),
        ...described.filter((place) => !used.includes(place)).map((place) => `${place} is not used`)];
    for (const [place, item] of Object.entries(document.paths)) {
        if (only && place !== only) {
            continue;
        }
        found.push(...METHODS.filter((method) => item[method]).flatMap((method) => check_operation(document, place, item, method)));
        if (!item.delete && ask("delete", target_of(document, place, item)).status !== "405") {
            found.push(`delete ${place} is answered`);
        }
    }
    return found;
}

test("the virtual device answers as described, and every resource that the library uses is there", () => {
    assert.ok(library_uses().size >= 5);
    assert.deepStrictEqual(faults(JSON.parse(text)), []);
});

test("without a client certificate there is no URL", () => {
    const document = JSON.parse(text);
    assert.throws(() => ask("post", "https://tfa.example.com/dev/tfaapi/kdumps", { body: '{"filename":"x"}', certificate: false }));
    assert.ok(document.paths["/dev/tfaapi/kdumps"].post.responses["403"]);
});

// Each makes one thing of the description wrong: the path that tells, and the change.
const planted = [
    ["/api/system/status", (document) => { delete document.paths["/api/system/status"]; }],
    ["/api/more", (document) => { document.paths["/api/more"] = document.paths["/api/system/status"]; }],
    ["/api/system/status", (document) => { document.components.schemas.Status.properties.systemInfo.properties.upTime.type = "string"; }],
    ["/api/system/status", (document) => { document.components.schemas.Status.properties.systemInfo.required.push("colour"); }],
    ["/api/system/settings/ledblink", (document) => { delete document.paths["/api/system/settings/ledblink"].patch.responses["400"]; }],
    ["/api/cloud_fail_log", (document) => { document.paths["/api/cloud_fail_log"].delete = document.paths["/api/cloud_fail_log"].get; }],
    ["/dev/tfaapi/kdumps", (document) => { document.components.schemas.UploadUrl.properties.message.enum = ["ok"]; }],
    ["/dev/tfaapi/kdumps", (document) => { document.components.schemas.DumpName.properties.filename.type = "integer"; }],
    ["/up/{number}/{name}", (document) => { delete document.paths["/up/{number}/{name}"].put.responses["403"]; }],
    ["/time", (document) => { document.paths["/time"].post = document.paths["/time"].get; }],
];

test("a planted difference is noticed", () => {
    for (const [place, plant] of planted) {
        const document = JSON.parse(text);
        plant(document);
        assert.notDeepStrictEqual(faults(document, place), [], plant.toString());
    }
});
