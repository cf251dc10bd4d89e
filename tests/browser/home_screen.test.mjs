// The home screen as people meet it: a real browser before the real programs.
//
// usage: BRIGHTLEDGER_PROGRAM_DIR=FOLDER node --test home_screen.test.mjs

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createServer } from "node:net";
import { after, before, test } from "node:test";
import {
  HomeScreen, launchBrowser, newFolder, notice, openPage, pictureTexts, removeFolder, settled, stateOf, until, widgetNames,
} from "./home_screen_driver.mjs";

const programs = process.env.BRIGHTLEDGER_PROGRAM_DIR;
const axe = readFileSync(new URL("../../setup/node_modules/axe-core/axe.min.js", import.meta.url), "utf8");
const desktop = { width: 1400, height: 1000 };
const phone = { width: 390, height: 844 };
const firstChoice = ["Perch, medium", "Portfolio, small", "Perch, small", "Portfolio, medium", "Brightledger News, large", "Perch, large"];

let browser;
before(async () => { browser = await launchBrowser(); });
after(() => browser.close());

/** A story with a home screen of its own and a page that nothing went wrong in. */
function story(name, tell, options = {}) {
  test(name, { timeout: 60_000 }, async () => {
    const folder = newFolder();
    const home = await HomeScreen.start(programs, folder);
    const context = await browser.newContext({ viewport: desktop, ...options });
    try {
      const page = await openPage(context, home);
      await tell(page, { home, context, folder });
      assert.deepEqual(page.trouble, []);
    } finally {
      await context.close();
      await home.stop();
      removeFolder(folder);
    }
  });
}

const button = (page, name) => page.getByRole("button", { name, exact: true });
const openControls = (page) => button(page, "Controls").click();
const showsNames = (page, wanted) => until(`the widgets are ${wanted}`, async () => String(await widgetNames(page)) === String(wanted));
const focusedName = (page) => page.evaluate(() =>
  document.activeElement.getAttribute("aria-label") ?? document.activeElement.textContent.trim());

/** Walks there with the tabulator, as somebody without a mouse does. */
async function tabTo(page, name) {
  for (let steps = 0; steps < 150; ++steps) {
    await page.keyboard.press("Tab");
    if ((await focusedName(page)).startsWith(name)) return;
  }
  assert.fail(`The tabulator never comes to ${name}.`);
}

/** How bright the first Perch widget's ground is, from 0 to 1: read off a spot where nothing else is drawn. */
const brightness = (page) => page.locator("#widget-1 img").evaluate((image) => {
  const canvas = document.createElement("canvas");
  const paint = canvas.getContext("2d");
  paint.drawImage(image, 0, 0);
  const [red, green, blue] = paint.getImageData(Math.round(image.naturalWidth / 2), 6, 1, 1).data;
  return (red + green + blue) / 765;
});
const isDark = async (page) => (await brightness(page)) < 0.25;
const isLight = async (page) => (await brightness(page)) > 0.75;

async function assertFits(page, what) {
  const { content, view } = await page.evaluate(() => ({ content: document.documentElement.scrollWidth, view: window.innerWidth }));
  assert.ok(content <= view, `${what}: ${content} pixels wide on a page of ${view}`);
}

async function assertNoAxeViolation(page, what) {
  await page.evaluate(axe);
  const { passes, violations } = await page.evaluate(() => window.axe.run());
  assert.ok(passes.length > 10, `${what}: axe looked at next to nothing`);
  assert.deepEqual(violations.map(({ id, nodes }) => `${what}: ${id} at ${nodes[0].target} (${nodes[0].failureSummary})`), []);
}

story("widgets are added, moved and removed with the mouse, and stand there after a restart", async (page, { home, context, folder }) => {
  assert.deepEqual(await widgetNames(page), firstChoice);

  await button(page, "Add widget").click();
  await button(page, "Add Portfolio, small").click();
  await showsNames(page, [...firstChoice, "Portfolio, small"]);
  assert.equal(await page.locator("#gallery").isVisible(), false);

  await button(page, "Edit").click();
  await page.locator("#widget-5").dragTo(page.locator("#widget-1"));
  await showsNames(page, ["Brightledger News, large", "Perch, medium", "Portfolio, small", "Perch, small", "Portfolio, medium", "Perch, large", "Portfolio, small"]);
  await page.locator("#widget-6").getByRole("button", { name: /^Remove/ }).click();
  const arranged = ["Brightledger News, large", "Perch, medium", "Portfolio, small", "Perch, small", "Portfolio, medium", "Portfolio, small"];
  await showsNames(page, arranged);

  assert.equal(await home.stop(), 0);
  await until("the page says that nobody answers", async () => /not running/.test(await notice(page)));
  const again = await HomeScreen.start(programs, folder);
  try {
    assert.deepEqual(await widgetNames(await openPage(context, again)), arranged);
  } finally {
    await again.stop();
  }
});

story("everything on the home screen can be done with the keyboard alone", async (page) => {
  await tabTo(page, "Add widget");
  await page.keyboard.press("Enter");
  await tabTo(page, "Add Perch, small");
  await page.keyboard.press("Enter");
  await showsNames(page, [...firstChoice, "Perch, small"]);
  await settled(page);

  await tabTo(page, "SENSEX");
  const row = await focusedName(page);
  await page.keyboard.press("Enter");
  await page.locator("#sheet").waitFor();
  await page.keyboard.press("Escape");
  assert.equal(await focusedName(page), row, "who closes the sheet is back on the row");

  await page.keyboard.press("Shift+Tab");
  await tabTo(page, "Skip to the widgets");
  await tabTo(page, "Edit");
  await page.keyboard.press("Space");
  await tabTo(page, "Remove Brightledger News");
  await tabTo(page, "Move earlier: Brightledger News");
  await page.keyboard.press("Enter");
  await showsNames(page, ["Perch, medium", "Portfolio, small", "Perch, small", "Brightledger News, large", "Portfolio, medium", "Perch, large", "Perch, small"]);
  assert.equal(await focusedName(page), "Move earlier: Brightledger News, large", "who moves a widget can move it on");
  await page.keyboard.press("Shift+Tab");
  await page.keyboard.press("Enter");
  await showsNames(page, ["Perch, medium", "Portfolio, small", "Perch, small", "Portfolio, medium", "Perch, large", "Perch, small"]);
});

story("a tap shows what the phone app would open, as text, and opens nothing", async (page, { home, context }) => {
  const asked = [];
  context.on("request", (request) => asked.push(request.url()));
  await page.locator("#widget-5").getByRole("link", { name: /Sensex climbs past/ }).click();
  await page.locator("#sheet").waitFor();
  assert.equal(await page.locator("#sheet-destination").textContent(), "news");
  const names = await page.locator("#sheet-parameters dt").allTextContents();
  const values = await page.locator("#sheet-parameters dd").allTextContents();
  assert.deepEqual(Object.fromEntries(names.map((name, index) => [name, values[index]])), {
    url: "https://www.brightledger.invalid/markets/sensex-nifty-live-blog", articleType: "liveblog", storyId: "12700100", isArticle: "1" });
  assert.equal(await page.locator("#sheet a").count(), 0);

  assert.equal(page.url(), `${home.origin}/`);
  assert.equal(context.pages().length, 1);
  assert.deepEqual(asked.filter((url) => !url.startsWith(home.origin)), []);
});

story("who signs in sees the figures at once, and the next user sees none of them", async (page, { home }) => {
  const says = (part) => until(`the portfolios say ${part}`, async () => {
    const texts = await pictureTexts(page, "Portfolio");
    return texts.length === 2 && texts.every((text) => text.includes(part)) ? texts : null;
  });
  await says("Please login");
  await openControls(page);
  const user = page.getByLabel("Signed in as");
  await user.selectOption("asha");
  const figures = (await says("Networth"))[0].match(/[\d,]{6,}\.\d\d/g);
  assert.ok(figures.length >= 2);

  await user.selectOption("vikram");
  await until("another user is signed in", async () => (await stateOf(page)).app.user === "vikram");
  const everything = JSON.stringify(await stateOf(page)) + await page.content();
  for (const figure of figures) assert.ok(!everything.includes(figure), `${figure} is still somewhere`);

  await user.selectOption("asha");
  await says("Networth");
  const told = JSON.stringify(await stateOf(page)) + await page.evaluate(async () =>
    (await Promise.all(["/choices", "/ledger", "/inspect/2", "/inspect/4"].map(async (path) => (await fetch(path)).text()))).join());
  for (const secret of ["demo-a7c1", "10042", "portfolioapi", new URL(home.address).searchParams.get("token")])
    assert.ok(!told.includes(secret), `${secret} is told to the page`);

  await user.selectOption("");
  await says("Please login");
});

story("another theme changes the pictures, and the automatic one turns dark at 19:00:01 in India", async (page) => {
  await openControls(page);
  await until("the first choice is dark", () => isDark(page));
  await page.getByLabel("Light", { exact: true }).check();
  await until("the pictures are light", () => isLight(page));
  await page.getByLabel("Dark", { exact: true }).check();
  await until("the pictures are dark", () => isDark(page));

  await page.getByLabel("Automatic", { exact: true }).check();
  for (const [time, isExpected] of [["2026-11-23T19:00:00", isLight], ["2026-11-23T19:00:01", isDark],
    ["2026-11-24T06:59:59", isDark], ["2026-11-24T07:00:00", isLight]]) {
    // The field writes no seconds where there are none.
    await page.getByLabel("Time in India").fill(time.replace(/:00$/, ""));
    await button(page, "Go").click();
    const wanted = `${time.slice(11)} in India · stopped`;
    await until(`it is ${time}`, async () => (await page.locator("#clock").textContent()).endsWith(wanted));
    await settled(page);
    await until(`the theme of ${time} is shown`, () => isExpected(page));
  }
});

story("a broken service shows in the widgets and is named on the page, and all is well when it is", async (page) => {
  await openControls(page);
  const service = page.getByLabel("The service is");
  const { process: child } = (await stateOf(page)).extension;
  for (const fault of ["down", "500", "304", "empty", "noise", "cut", "reset"]) {
    await service.selectOption(fault);
    await until(`${fault} shows in the widgets`, async () =>
      [...await pictureTexts(page, "Perch"), ...await pictureTexts(page, "Brightledger News")].every((text) => !/SENSEX|Sensex/.test(text)));
    const words = await service.locator("option:checked").textContent();
    await until(`the page says that the service is ${words}`, async () => (await notice(page)).includes(`The service is ${words}`));
    assert.deepEqual(await widgetNames(page), firstChoice);

    await service.selectOption("none");
    await until(`nothing of ${fault} is left`, async () =>
      [...await pictureTexts(page, "Perch"), ...await pictureTexts(page, "Brightledger News")].every((text) => /SENSEX|Sensex/.test(text)));
    await until("the page complains no more", async () => await notice(page) === "");
  }
  assert.equal((await stateOf(page)).extension.process, child, "the extension outlives whatever the service does");
});

story("while the extension is dead the last good pictures stay, and it comes back by itself", async (page) => {
  await openControls(page);
  const widgets = async (where) => (await stateOf(page)).widgets.filter(where);
  const versions = (list) => list.map((widget) => widget.picture.version);
  const service = page.getByLabel("The service is");
  await service.selectOption("slow");
  await until("many widgets wait for the service", async () => (await widgets((widget) => widget.isRunning)).length >= 3);
  const good = (await stateOf(page)).widgets;
  const { process: child } = (await stateOf(page)).extension;

  await button(page, "Kill the extension").click();
  await until("the page says what happened, and what it waits for", async () =>
    /signal 9.*The last good pictures? stays?; waiting after a failure/.test(await notice(page)));
  await until("a widget is marked", async () => await page.locator(".widget.is-stale .age").first().textContent().then((text) => text.startsWith("no answer"), () => false));
  // Whom the death spared is answered meanwhile, by the next child.
  const failed = (await widgets((widget) => widget.failures)).map(({ id }) => id);
  const hasFailed = ({ id }) => failed.includes(id);
  assert.deepEqual(versions(await widgets(hasFailed)), versions(good.filter(hasFailed)));
  await until("the ledger tells of it", async () => /failed: the extension was ended by signal 9/.test(await page.locator("#ledger").textContent()));
  await until("one of them is asked again", async () => (await widgets((widget) => hasFailed(widget) && widget.isRunning)).length > 0);
  assert.deepEqual(versions(await widgets(hasFailed)), versions(good.filter(hasFailed)));

  await service.selectOption("none");
  await button(page, "Kill the extension").click();
  await until("another child answers and nothing is marked", async () => {
    const state = await stateOf(page);
    return state.extension.process > 0 && state.extension.process !== child && state.widgets.every((widget) => !widget.failures && !widget.isRunning);
  });
  await until("the page complains no more", async () => await notice(page) === "" && await page.locator(".widget.is-stale").count() === 0);
});

story("a page that is loaded again shows the same, without the token in its address", async (page, { home, context }) => {
  await openControls(page);
  await page.getByLabel("Light", { exact: true }).check();
  await until("the pictures are light", () => isLight(page));
  await page.reload();
  await settled(page);
  assert.deepEqual(await widgetNames(page), firstChoice);
  assert.ok(await isLight(page));
  assert.equal(page.url(), `${home.origin}/`);
  assert.equal(await page.evaluate(() => document.cookie), "", "no script reads the cookie");

  const second = await openPage(context, home);
  await openControls(second);
  await second.getByLabel("Dark", { exact: true }).check();
  await until("the first tab is told what the second did", () => isDark(page));
});

for (const [width, viewport] of [["a phone's", phone], ["a desk's", desktop]]) {
  for (const colorScheme of ["light", "dark"]) {
    story(`at ${width} width and in ${colorScheme} colours everything fits and axe finds nothing`, async (page) => {
      const look = async (what) => {
        await assertFits(page, what);
        // A dialog's blurred ground and fading parts would be measured halfway.
        await page.evaluate(() => Promise.all(document.getAnimations().filter((one) => Number.isFinite(one.effect.getComputedTiming().endTime)).map((one) => one.finished)));
        await assertNoAxeViolation(page, what);
      };
      await look("the home screen");

      await button(page, "Add widget").click();
      const previews = page.locator("#gallery img");
      assert.deepEqual(await previews.evaluateAll((all) => all.map((one) => one.alt)),
        ["Brightledger News, large", "Perch, large", "Perch, medium", "Perch, small", "Portfolio, medium", "Portfolio, small"]);
      await look("the gallery");
      await page.keyboard.press("Escape");

      await button(page, "Inspect Brightledger News, large").click();
      await page.locator("#inspector").waitFor();
      for (const name of ["Entry", "View tree with frames"]) await page.locator("#inspector summary").getByText(name, { exact: true }).click();
      assert.match(await page.locator("#inspector-tree").textContent(), /"frame"/);
      const boxes = await page.locator("#inspector-picture img, #inspector-picture i").evaluateAll((all) => all.slice(0, 2).map((one) => one.getBoundingClientRect().toJSON()));
      assert.deepEqual(boxes[1], boxes[0], "the outermost frame lies on the picture");
      await look("the inspector");
      await page.keyboard.press("Escape");

      await page.locator("#widget-1").getByRole("link").first().click();
      await look("the sheet");
      await page.keyboard.press("Escape");

      await openControls(page);
      await until("the controls are in sight", () => page.locator("#panel").evaluate((panel) => panel.getBoundingClientRect().top < window.innerHeight / 3));
      await look("the controls");
      await page.getByLabel("Automatic", { exact: true }).check();
      await button(page, "Compute the day strip").click();
      await page.locator("#day-strip").waitFor();
      const captions = await page.locator("#day-rows").textContent();
      for (const turn of ["07:00:00 · theme", "19:00:01 · theme"]) assert.ok(captions.includes(turn), turn);
      await look("the day strip");
    }, { viewport, colorScheme });
  }
}

/** A feed whose headlines mean harm; its address is what the phone app would override the feed's with. */
async function hostileFeed(shareAddress) {
  const headlines = [
    "<script>window.isHurt = true</script><img src=x onerror=\"window.isHurt = true\">",
    "\u202Eexe.gnp \u2067right to left\u2069 \u200F and back",
    "Donaudampfschifffahrt".repeat(40),
    "\"><svg onload=alert(1)> &lt;b&gt; {{constructor}} ${1+1}",
    "\u0301\u0302".repeat(60) + "zalgo",
  ];
  const list = headlines.map((headline, index) => ({
    headline, story_id: `${index + 1}`, timeago: "1 min ago", thumbnail: "", story_type: "news", share_url: shareAddress }));
  const body = JSON.stringify({ status: "success", list });
  // Node's own server refuses the extension's method, which comes in lower case.
  const server = createServer((socket) => socket.on("error", () => {}).once("data", () =>
    socket.end(`HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: ${Buffer.byteLength(body)}\r\nConnection: close\r\n\r\n${body}`)));
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  return { headlines, address: `http://127.0.0.1:${server.address().port}/feed`, close: () => server.close() };
}

for (const [width, viewport] of [["a phone's", phone], ["a desk's", desktop]]) {
  story(`hostile headlines run no script and break no layout at ${width} width`, async (page) => {
    const broken = await hostileFeed("https://www.brightledger.invalid/\"><script>window.isHurt=true</script>");
    const feed = await hostileFeed("javascript:window.isHurt=true");
    try {
      await openControls(page);
      const listenTo = async (address) => {
        await page.getByLabel("News feed address").fill(address);
        await button(page, "Set").click();
      };
      // A link that is no address ends the extension, and only the page's own text tells of it.
      await listenTo(broken.address);
      await until("the page tells of the link", async () => /not an address.*<script>/.test(await notice(page)));
      assert.match((await pictureTexts(page, "Brightledger News"))[0], /Sensex climbs past/);
      await assertFits(page, "a long notice");

      await listenTo(feed.address);
      await until("the headlines stand there as text", async () => (await pictureTexts(page, "Brightledger News"))[0].includes(feed.headlines[0]));
      await settled(page);
      await assertFits(page, "the home screen");

      const links = page.locator("#widget-5").getByRole("link");
      for (let index = 0; index < await links.count(); ++index) {
        await links.nth(index).click();
        await page.locator("#sheet").waitFor();
        await assertFits(page, "the sheet");
        await page.keyboard.press("Escape");
      }
      await button(page, "Inspect Brightledger News, large").click();
      await page.locator("#inspector").waitFor();
      await page.locator("#inspector summary").getByText("Entry", { exact: true }).click();
      assert.ok((await page.locator("#inspector-entry").textContent()).includes("onerror"));
      await assertFits(page, "the inspector");

      assert.equal(await page.evaluate(() => window.isHurt), undefined);
      assert.equal(await page.evaluate(() => document.querySelectorAll("script:not([src]), svg, img[src=x]").length), 0);
    } finally {
      broken.close();
      feed.close();
    }
  }, { viewport });
}
