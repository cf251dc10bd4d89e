// Measures what users of the home screen notice: the first paint, the time from a request to the new picture, and the
// load of the idle host. Six widgets are placed, and the demo service answers.
//
// usage: page_bench.mjs FOLDER_OF_THE_PROGRAMS [SECONDS_OF_IDLENESS]

import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import {
  HomeScreen, launchBrowser, newFolder, openPage, removeFolder, stateOf, until,
} from "../tests/browser/home_screen_driver.mjs";

const [programs, idleSeconds = "32"] = process.argv.slice(2);
const rounds = 15;

function show(label, values, unit) {
  const sorted = [...values].sort((a, b) => a - b);
  const text = (value) => value.toFixed(1);
  console.log(`  ${label.padEnd(34)}${text(sorted[Math.floor(sorted.length / 2)]).padStart(8)} ${unit.padEnd(4)} (${text(sorted[0])} to ${text(sorted.at(-1))})`);
}

async function firstPaints(page) {
  const paints = [];
  for (let round = 0; round < rounds; ++round) {
    await page.reload();
    paints.push(await until("the page is painted", () => page.evaluate(() => performance.getEntriesByName("first-contentful-paint")[0]?.startTime)));
  }
  return paints;
}

/** From the click to the frame that shows the new picture, timed within the page. */
async function newPictures(page) {
  const times = [];
  await page.getByRole("button", { name: "Controls", exact: true }).click();
  for (let round = 0; round < rounds; ++round) {
    times.push(await page.evaluate((theme) => new Promise((done) => {
      const widget = document.querySelector("#widget-1 .outline");
      const start = performance.now();
      new MutationObserver((_, observer) => {
        observer.disconnect();
        requestAnimationFrame(() => done(performance.now() - start));
      }).observe(widget, { childList: true });
      document.querySelector(`input[name=theme][value="${theme}"]`).click();
    }), round % 2 === 0 ? 1 : 0));
    await until("the other widgets are drawn", async () => (await stateOf(page)).widgets.every((widget) => !widget.isRunning));
  }
  return times;
}

/** Seconds of processor time that a process has used. */
function processorSeconds(process) {
  const fields = readFileSync(`/proc/${process}/stat`, "utf8").replace(/^.*\) /, "").split(" ");
  return (Number(fields[11]) + Number(fields[12])) / Number(execFileSync("getconf", ["CLK_TCK"], { encoding: "utf8" }));
}

const residentMiB = (process) => Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${process}/status`, "utf8"))[1]) / 1024;

/** In percent of a core. Quotes are renewed every 30 s, so a shorter time would miss that work. */
async function idle(home) {
  const before = processorSeconds(home.process.pid);
  const start = performance.now();
  await new Promise((done) => setTimeout(done, Number(idleSeconds) * 1000));
  return (processorSeconds(home.process.pid) - before) / (performance.now() - start) * 100_000;
}

const folder = newFolder();
const home = await HomeScreen.start(programs, folder);
const browser = await launchBrowser();
try {
  const page = await openPage(await browser.newContext({ viewport: { width: 1400, height: 1000 } }), home);
  console.log(`The home screen with ${(await stateOf(page)).widgets.length} widgets, in a browser, ${rounds} times`);
  show("first contentful paint", await firstPaints(page), "ms");
  show("a request to the new picture", await newPictures(page), "ms");
  show(`host with an open page, ${idleSeconds} s`, [await idle(home)], "%");
  show("host resident", [residentMiB(home.process.pid)], "MiB");
} finally {
  await browser.close();
  await home.stop();
  removeFolder(folder);
}
