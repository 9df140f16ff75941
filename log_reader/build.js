// Prints the page as one self-contained file: node log_reader/build.js >docs/log-reader.html
"use strict";

const fs = require("fs");
const path = require("path");

const read = (...place) => fs.readFileSync(path.join(__dirname, ...place), "utf8");
const table = JSON.stringify(JSON.parse(read("..", "docs", "log-lines.json"))).replace(/</g, "\\u003c");
const parts = { STYLE: read("page.css"), READER: read("reader.js"), TABLE: table, PAGE: read("page.js") };
process.stdout.write(read("page.html").replace(/@([A-Z]+)@/g, (all, name) => {
    if (!(name in parts)) {
        throw new Error(`${all} in page.html names no part`);
    }
    return parts[name];
}));
