// The gallery's page in a browser, opened from the file system.
//
// usage: BRIGHTLEDGER_PROGRAM_DIR=FOLDER node --test gallery.test.mjs

import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { copyFileSync, readdirSync, renameSync } from "node:fs";
import path from "node:path";
import { test } from "node:test";
import { pathToFileURL } from "node:url";
import { launchBrowser, newFolder, removeFolder } from "./home_screen_driver.mjs";

const program = path.join(process.env.BRIGHTLEDGER_PROGRAM_DIR, "brightledger");

test("the page shows every picture, and what a comparison found", { timeout: 60_000 }, async () => {
  const folder = newFolder();
  const browser = await launchBrowser();
  const file = (name) => path.join(folder, `${name}.png`);
  try {
    const page = await browser.newPage();
    const trouble = [];
    page.on("pageerror", (error) => trouble.push(error.message));
    page.on("console", (message) => trouble.push(message.text()));
    const open = async (hash = "") => {
      await page.goto("about:blank");  // or the same page would only scroll
      await page.goto(pathToFileURL(path.join(folder, "index.html")) + hash);
    };
    const sources = () => page.locator("img").evaluateAll((all) => all.map((image) => image.getAttribute("src")));

    assert.equal(spawnSync(program, ["gallery", "-o", folder]).status, 0);
    await open();
    assert.deepEqual((await sources()).sort(), readdirSync(folder).filter((name) => name.endsWith(".png")).sort());
    assert.ok(await page.locator("img").evaluateAll((all) => all.every((image) => image.naturalWidth > 0)));
    assert.equal(await page.locator(".news, .verdict").count(), 0);

    const changed = "PerchWidget-systemMedium-light-gain";
    copyFileSync(file("PerchWidget-systemMedium-light-loss"), file(changed));
    renameSync(file("NewsWidget-systemLarge-dark-full"), file("NewsWidget-systemLarge-dark-yesterday"));
    assert.equal(spawnSync(program, ["gallery", "-o", folder, "--compare", folder]).status, 1);
    await open(`#${changed}.png`);
    assert.deepEqual(await page.locator(".changes li").allTextContents(), [
      "NewsWidget, Large, dark: Full, new",
      "PerchWidget, Medium, light: Gain, changed",
      "NewsWidget, Large, dark: NewsWidget: yesterday, no longer drawn",
    ]);
    assert.deepEqual(await page.locator("figcaption").allTextContents(), ["new", "before", "changed", "no longer drawn"]);
    assert.deepEqual((await sources()).filter((source) => source.startsWith("before/")),
      [`before/${changed}.png`, "before/NewsWidget-systemLarge-dark-yesterday.png"]);
    assert.ok(await page.locator(":target").evaluate((figure) => figure.getBoundingClientRect().top < innerHeight));
    assert.equal(await page.locator(":target figcaption").textContent(), "changed");
    assert.deepEqual(trouble, []);
  } finally {
    await browser.close();
    removeFolder(folder);
  }
});
