// The workbench: why the widgets do what they do.
import { ago, clock as widgetClock, element, make, nameOf, outlined, pictureScale } from "/elements.js";

const family = (name) => name.slice(6).toLowerCase();
const clock = new Intl.DateTimeFormat("en-GB", { timeStyle: "medium", timeZone: "Asia/Kolkata" });
const time = (instant) => clock.format(Date.parse(instant));

let ledgerWait = null;

// After the pictures: with many changes in a row, building the table for each would hold them up.
export function showLedgerSoon() {
  ledgerWait ??= setTimeout(() => { ledgerWait = null; showLedger(); }, 250);
}

export async function showLedger() {
  const answer = await fetch("/ledger").catch(() => null);
  if (!answer?.ok) return;
  const entries = await answer.json();
  element("ledger").replaceChildren(...entries.slice(-60).reverse().map((entry) => {
    const [decided, due] = [time(entry.decided), time(entry.due)];
    const cells = [decided, `${entry.kind.replace("Widget", "")} ${family(entry.family)}`, entry.asker,
      entry.reason ? `${entry.result}: ${entry.reason}` : entry.result,
      entry.durationMs ? entry.durationMs.toFixed(0) : "", entry.peakRssKiB ? (entry.peakRssKiB / 1024).toFixed(1) : ""];
    const row = make("tr", {}, ...cells.map((text) => make("td", { textContent: text })));
    if (due !== decided) row.firstChild.append(make("div", { className: "due", textContent: `due ${due}` }));
    return row;
  }));
}

function framesOf(node, found = []) {
  if (!node || typeof node !== "object") return found;
  if (node.frame && typeof node.frame.x === "number") found.push(node.frame);
  for (const child of node.children || []) framesOf(child, found);
  for (const part of ["content", "layer", "label"]) framesOf(node[part], found);
  return found;
}

export async function showInspector(widget) {
  const answer = await fetch(`/inspect/${widget.id}`).catch(() => null);
  if (!answer?.ok) return;
  const inspection = await answer.json();
  element("inspector-title").textContent = nameOf(widget.displayName, widget.family);
  const framed = element("inspector-picture");
  Object.assign(framed.style, { width: `${widget.width}px`, height: `${widget.height}px` });
  framed.replaceChildren();
  if (widget.picture) {
    const image = make("img", { alt: "", src: `/picture/${widget.id}?version=${widget.picture.version}&scale=${pictureScale()}` });
    outlined(image.style, widget.outline);
    framed.append(image);
  }
  for (const frame of framesOf(inspection.tree)) {
    const box = make("i");
    Object.assign(box.style, { left: `${frame.x}px`, top: `${frame.y}px`, width: `${frame.width}px`, height: `${frame.height}px` });
    framed.append(box);
  }
  const next = inspection.next;
  const policy = inspection.policy;
  const facts = {
    Policy: policy === "atEnd" ? "at the end of its entries" : policy ? `after ${time(policy.after)}` : "none yet",
    "Next reload": next ? `${time(next.at)}, ${ago(next.at, widgetClock.now())}${next.hold ? ` (${next.hold})` : ""}` : widget.isRunning ? "under way" : "none",
    "Picture": widget.picture ? `version ${widget.picture.version}, ${ago(widget.picture.since, widgetClock.now())}` : "none",
    "Last error": inspection.lastError || "none",
  };
  element("inspector-facts").replaceChildren(...Object.entries(facts).flatMap(([name, value]) => [make("dt", { textContent: name }), make("dd", { textContent: value })]));
  element("inspector-links").replaceChildren(...(widget.picture?.links || []).map((link) => make("li", {}, make("code", { textContent: link.url }))));
  element("inspector-entry").textContent = JSON.stringify(inspection.entry, null, 2);
  element("inspector-tree").textContent = JSON.stringify(inspection.tree, null, 2);
  element("inspector-log").textContent = inspection.log.join("\n") || "nothing";
  element("inspector").showModal();
  // The latest lines are at its end.
  element("inspector-log").scrollTop = element("inspector-log").scrollHeight;
}

export async function showDay() {
  const button = element("day");
  button.disabled = true;
  button.textContent = "Computing…";
  const answer = await fetch("/day").catch(() => null);
  button.disabled = false;
  button.textContent = "Compute the day strip";
  if (!answer?.ok) return;
  const stamp = Date.now();
  element("day-rows").replaceChildren(...(await answer.json()).map((row) => make("div", { className: "day-row" },
    make("h3", { textContent: nameOf(row.displayName, row.family) }),
    make("p", { className: "small", textContent: row.error ? `Ends early: ${row.error}` : `${row.questions} questions, ${row.looks.length} ${row.looks.length === 1 ? "look" : "looks"}` }),
    row.looks.length === 0 ? "" : make("div", { className: "looks", tabIndex: 0 }, ...row.looks.map((look) => make("figure", {},
      make("img", { alt: `${row.displayName} at ${time(look.from)}`, loading: "lazy", src: `/day/${look.picture}?of=${stamp}` }),
      make("figcaption", { textContent: `${time(look.from)}${look.cause === "policy" ? "" : ` · ${look.cause}`}` })))))));
  element("day-strip").showModal();
}
