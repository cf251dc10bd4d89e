// Starts real home screens and opens them in a real browser.

import { spawn, execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { createInterface } from "node:readline";
import { chromium } from "../../setup/node_modules/playwright-core/index.mjs";

const patience = 20_000;

/** Asks again and again until the answer is true; `what` says in words what was waited for. */
export async function until(what, question) {
  const end = Date.now() + patience;
  let last;
  while (Date.now() < end) {
    last = await question();
    if (last) return last;
    await new Promise((done) => setTimeout(done, 50));
  }
  throw new Error(`Waited in vain: ${what}`);
}

export function newFolder() {
  return mkdtempSync(path.join(tmpdir(), "home-screen-"));
}

export function removeFolder(folder) {
  rmSync(folder, { recursive: true, force: true });
}

/** One `brightledger run` with the demo service behind it. Its data stay in `folder`. */
export class HomeScreen {
  static async start(programs, folder) {
    const home = new HomeScreen();
    home.process = spawn(path.join(programs, "brightledger"),
      ["run", "--port", "0", "--data-dir", path.join(folder, "data"), "--time-zone", "Asia/Kolkata", "--locale", "en_IN"],
      { stdio: ["ignore", "pipe", "inherit"], env: { ...process.env, XDG_RUNTIME_DIR: folder } });
    home.ended = new Promise((done) => home.process.once("exit", done));
    const lines = createInterface({ input: home.process.stdout });
    home.address = await Promise.race([
      new Promise((done) => lines.once("line", done)),
      home.ended.then((code) => { throw new Error(`The home screen ended with ${code} before it said where it is.`); }),
    ]);
    home.origin = new URL(home.address).origin;
    return home;
  }

  /** Ends it as a service manager would. */
  async stop() {
    this.process.kill("SIGTERM");
    return this.ended;
  }
}

export function launchBrowser() {
  return chromium.launch({
    executablePath: execFileSync("sh", ["-c", "command -v chromium"], { encoding: "utf8" }).trim(),
    args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
      "--disable-component-update", "--disable-sync"],
  });
}

/** What the host tells its page. */
export const stateOf = (page) => page.evaluate(async () => (await fetch("/state")).json());

/** The widgets as a screen reader meets them. */
export const widgetNames = (page) => page.locator("main section").evaluateAll((all) => all.map((one) => one.getAttribute("aria-label")));

/** What the pictures of the widgets of that name say. */
export const pictureTexts = (page, name) => page.locator(`main section[aria-label^="${name}"] img`).evaluateAll((all) => all.map((one) => one.alt));

export const notice = (page) => page.locator("#notice").textContent();

/** Opens the page and waits until every widget shows what the service told. */
export async function openPage(context, home) {
  const page = await context.newPage();
  page.trouble = [];
  page.on("pageerror", (error) => page.trouble.push(error.message));
  page.on("dialog", (dialog) => { page.trouble.push(`dialog: ${dialog.message()}`); dialog.dismiss(); });
  page.on("console", (message) => { if (/Content Security Policy/.test(message.text())) page.trouble.push(message.text()); });
  await page.goto(home.address);
  await settled(page);
  return page;
}

export async function settled(page) {
  await until("every widget shows its own picture", async () => {
    const state = await stateOf(page);
    return state.widgets.every((widget) => widget.picture && !widget.picture.isPlaceholder && !widget.isRunning);
  });
  await until("every picture stands on the page", () => page.evaluate(async () => {
    const state = await (await fetch("/state")).json();
    return state.widgets.every((widget) => {
      const image = document.querySelector(`#widget-${widget.id} img`);
      return image?.complete && image.src.includes(`version=${widget.picture.version}&`);
    });
  }));
}
