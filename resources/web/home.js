// The home screen: draws what the host tells, and sends it what people do.
import { ago, clock, element, make, nameOf, outlined, pictureScale } from "/elements.js";
import { showDay, showInspector, showLedger, showLedgerSoon } from "/workbench.js";

const gap = { across: 22, down: 38 };
const unit = 158;
const india = new Intl.DateTimeFormat("en-GB", { dateStyle: "medium", timeStyle: "medium", timeZone: "Asia/Kolkata" });
let state = null;
let choices = { gallery: [], users: [], assets: [] };
let isEditing = false;

async function act(action, details = {}) {
  const answer = await fetch("/act", { method: "POST", body: JSON.stringify({ action, ...details }) }).catch(() => null);
  // What went well shows in the state that follows it, and that one may be here already.
  if (!answer?.ok) element("notice").textContent = answer ? await answer.text() : "The home screen is not running.";
}

// The same text anew would be laid out and painted anew.
const write = (node, text) => { if (node.textContent !== text) node.textContent = text; };

const place = (style, frame) => Object.assign(style, { left: `${frame.x}px`, top: `${frame.y}px`, width: `${frame.width}px`, height: `${frame.height}px` });

function openSheet(link) {
  element("sheet-destination").textContent = link.destination;
  element("sheet-url").textContent = link.url;
  element("sheet-parameters").replaceChildren(...link.parameters.flatMap((parameter) => [
    make("dt", { textContent: parameter.name }), make("dd", { textContent: parameter.value || "–" })]));
  element("sheet").showModal();
}

function makeWidget(widget) {
  const box = make("section", { className: "widget", id: `widget-${widget.id}` });
  const outline = make("div", { className: "outline" });
  outlined(outline.style, widget.outline);
  const age = make("span", { className: "age" });
  const inspect = make("button", { type: "button", textContent: "Inspect" });
  const name = nameOf(widget.displayName, widget.family);
  inspect.setAttribute("aria-label", `Inspect ${name}`);
  inspect.addEventListener("click", () => showInspector(state.widgets.find((other) => other.id === widget.id)));
  const tool = (deed, text, work) => {
    const button = make("button", { type: "button", textContent: text });
    button.setAttribute("aria-label", `${deed} ${name}`);
    button.addEventListener("click", work);
    return button;
  };
  const index = () => state.widgets.findIndex((other) => other.id === widget.id);
  const tools = make("div", { className: "tools" },
    tool("Remove", "−", async () => { await act("remove", { id: widget.id }); element("home").focus(); }),
    tool("Move earlier:", "‹", () => act("move", { id: widget.id, index: index() - 1 })),
    tool("Move later:", "›", () => act("move", { id: widget.id, index: index() + 1 })));
  box.append(tools, outline, make("div", { className: "caption" }, age, inspect));
  box.addEventListener("dragstart", (event) => event.dataTransfer.setData("text/plain", String(widget.id)));
  box.addEventListener("dragover", (event) => { if (isEditing) { event.preventDefault(); box.classList.add("is-target"); } });
  box.addEventListener("dragleave", () => box.classList.remove("is-target"));
  box.addEventListener("drop", (event) => {
    event.preventDefault();
    box.classList.remove("is-target");
    act("move", { id: Number(event.dataTransfer.getData("text/plain")), index: index() });
  });
  return box;
}

async function updatePicture(box, widget) {
  const outline = box.querySelector(".outline");
  const picture = widget.picture;
  if (!picture) { outline.replaceChildren(); delete box.dataset.version; return; }
  const version = `${picture.version}@${pictureScale()}`;
  if (box.dataset.version === version) return;
  box.dataset.version = version;
  // Only a picture that is whole takes the old one's place, and it is decoded for the same frame: nothing flickers.
  const image = make("img", { alt: picture.isPlaceholder ? "Loading" : picture.text, draggable: false, decoding: "sync" });
  const isWhole = new Promise((done) => { image.onload = image.onerror = done; });
  image.src = `/picture/${widget.id}?version=${picture.version}&scale=${pictureScale()}`;
  await isWhole;
  if (box.dataset.version !== version) return;
  const held = outline.contains(document.activeElement) ? [...outline.querySelectorAll("a")].indexOf(document.activeElement) : -1;
  outline.replaceChildren(image, ...picture.links.map((link) => {
    const area = make("a", { href: "#home" });
    area.setAttribute("aria-label", link.name);
    place(area.style, link.frame);
    area.addEventListener("click", (event) => { event.preventDefault(); openSheet(link); });
    return area;
  }));
  if (held >= 0) outline.querySelectorAll("a")[held]?.focus();
}

function updateWidgets() {
  const home = element("home");
  const count = Math.max(1, ...state.widgets.map((widget) => widget.page + 1));
  while (home.querySelectorAll(".page").length < count) home.append(make("div", { className: "page" }));
  const pages = [...home.querySelectorAll(".page")];
  pages.slice(count).forEach((page) => page.remove());
  home.querySelector(".empty")?.remove();
  if (!state.widgets.length) home.append(make("p", { className: "empty", textContent: "No widgets yet. Add one from the gallery." }));
  home.querySelectorAll(".widget").forEach((box) => {
    if (!state.widgets.some((widget) => `widget-${widget.id}` === box.id)) box.remove();
  });
  pages.slice(0, count).forEach((page, number) => {
    const rows = Math.max(1, ...state.widgets.filter((widget) => widget.page === number)
      .map((widget) => widget.row + (widget.height > unit ? 2 : 1)));
    page.style.height = `${rows * (unit + gap.down)}px`;
  });
  state.widgets.forEach((widget) => {
    const box = element(`widget-${widget.id}`) || makeWidget(widget);
    const page = pages[widget.page];
    // Moving a focused element would take its focus, so what stays in order is not touched.
    const previous = state.widgets[state.widgets.indexOf(widget) - 1];
    const before = previous && previous.page === widget.page ? element(`widget-${previous.id}`) : null;
    if (box.parentNode !== page || box.previousElementSibling !== before) {
      const focused = box.contains(document.activeElement) ? document.activeElement : null;
      if (before) before.after(box); else page.prepend(box);
      focused?.focus();
    }
    place(box.style, { x: widget.column * (unit + gap.across), y: widget.row * (unit + gap.down), width: widget.width, height: widget.height });
    box.draggable = isEditing;
    box.setAttribute("aria-label", nameOf(widget.displayName, widget.family));
    box.classList.toggle("is-stale", widget.failures > 0);
    updatePicture(box, widget);
  });
}

function updateAges() {
  if (!state) return;
  const now = clock.now();
  const speed = state.clock.rate === 1 ? "" : state.clock.rate === 0 ? " · stopped" : ` · ${state.clock.rate} times as fast`;
  write(element("clock"), `${india.format(now)} in India${speed}`);
  state.widgets.forEach((widget) => {
    const age = element(`widget-${widget.id}`)?.querySelector(".age");
    if (!age) return;
    const since = widget.picture ? ago(widget.picture.since, now) : "loading";
    // Short enough to stand beside the button under a small widget.
    write(age, widget.failures > 0 ? `no answer · ${since.replace(" ago", "")}` : since);
    age.title = widget.lastError;
  });
}

const unlessFocused = (control, value) => { if (document.activeElement !== control) control.value = value; };

const all = new Intl.ListFormat("en-GB");
const distinct = (values) => [...new Set(values)];

/** Names every kind that fails, those with the same trouble together. */
function failureText(failing) {
  const troubles = distinct(failing.map((widget) => widget.lastError)).map((trouble) => {
    const names = distinct(failing.filter((widget) => widget.lastError === trouble).map((widget) => widget.displayName));
    return `${all.format(names)}: ${trouble}.`;
  });
  const stay = failing.length === 1 ? "The last good picture stays" : "The last good pictures stay";
  const holds = distinct(failing.map((widget) => widget.next?.hold).filter(Boolean));
  return `${troubles.join(" ")} ${[stay, ...holds].join("; ")}.`;
}

function noticeText() {
  if (state.app.error) return state.app.error;
  const failing = state.widgets.filter((widget) => widget.lastError);
  if (failing.length) return failureText(failing);
  if (state.hasDemo && state.fault !== "none") return `The service is ${element("fault").selectedOptions[0].textContent}.`;
  return "";
}

function updateControls() {
  const check = (name, value) => { const input = document.querySelector(`input[name=${name}][value="${value}"]`); if (input) input.checked = true; };
  check("theme", state.app.theme);
  check("mode", state.mode);
  element("user").value = state.app.user;
  element("environment").value = state.environment;
  element("fault").value = state.fault;
  element("service").hidden = !state.hasDemo;
  unlessFocused(element("news-address"), state.app.news);
  const peak = (state.extension.peakRssKiB / 1024).toFixed(1);
  write(element("extension"), state.extension.process ? `The extension runs as process ${state.extension.process}, peak ${peak} MB.` : "The extension is not running.");
  write(element("notice"), noticeText());

  const keys = state.app.assets.map((asset) => asset.key);
  const signature = JSON.stringify(state.app.assets);
  if (element("assets").dataset.signature === signature) return;
  element("assets").dataset.signature = signature;
  const held = element("assets").contains(document.activeElement) ? document.activeElement.getAttribute("aria-label") : null;
  element("assets").replaceChildren(...state.app.assets.map((asset, index) => {
    const button = (text, name, changed) => {
      const made = make("button", { type: "button", textContent: text });
      made.setAttribute("aria-label", `${name} ${asset.title}`);
      made.addEventListener("click", () => act("assets", { keys: changed() }));
      return made;
    };
    const without = () => keys.filter((_, other) => other !== index);
    const earlier = () => { const list = without(); list.splice(Math.max(0, index - 1), 0, asset.key); return list; };
    return make("li", {}, make("span", { textContent: asset.title }), button("↑", "Move up", earlier), button("✕", "Remove", without));
  }));
  if (held) element("assets").querySelector(`[aria-label="${CSS.escape(held)}"]`)?.focus();
  element("asset-choice").replaceChildren(...choices.assets.filter((asset) => !keys.includes(asset.key))
    .map((asset) => make("option", { value: asset.key, textContent: `${asset.title} (${asset.type})` })));
}

function update(text) {
  state = JSON.parse(text);
  clock.heard(state.clock);
  updateWidgets();
  updateControls();
  updateAges();
  if (!element("panel").hidden) showLedgerSoon();
}

let snapshots = Promise.resolve();

// A snapshot may wait long for the service. Until it comes the placeholder stands there, as on a phone; and one
// after the other, or they would take all of the browser's connections from whatever else is clicked.
function showSnapshotLater(placeholder, address) {
  const gallery = element("gallery");
  snapshots = snapshots.then(async () => {
    if (!gallery.open || !placeholder.isConnected) return;
    const { alt, width, height } = placeholder;
    const snapshot = make("img", { alt, width, height, src: address });
    const stop = () => snapshot.removeAttribute("src");
    gallery.addEventListener("close", stop);
    if (await snapshot.decode().then(() => true, () => false)) placeholder.replaceWith(snapshot);
    gallery.removeEventListener("close", stop);
  });
}

function openGallery() {
  element("gallery-list").replaceChildren(...choices.gallery.flatMap((kind) => kind.families.map(({ family, width, height, outline: path }) => {
    const name = nameOf(kind.displayName, family);
    const address = `/preview/${kind.kind}/${family}?scale=${pictureScale()}`;
    const placeholder = make("img", { alt: name, width, height, loading: "lazy", src: `${address}&request=placeholder` });
    placeholder.addEventListener("load", () => showSnapshotLater(placeholder, address));
    const outline = make("div", { className: "outline" }, placeholder);
    Object.assign(outline.style, { width: `${width}px`, height: `${height}px` });
    outlined(outline.style, path);
    const add = make("button", { type: "button", textContent: "Add" });
    add.setAttribute("aria-label", `Add ${name}`);
    add.addEventListener("click", async () => { await act("place", { kind: kind.kind, family }); element("gallery").close(); });
    return make("article", {}, make("div", { className: "shade" }, outline), make("h3", { textContent: name }),
      make("p", { className: "small", textContent: kind.description }), add);
  })));
  element("gallery").showModal();
}

function wire() {
  element("add").addEventListener("click", openGallery);
  element("edit").addEventListener("click", () => {
    isEditing = !isEditing;
    element("edit").setAttribute("aria-pressed", String(isEditing));
    element("edit").textContent = isEditing ? "Done" : "Edit";
    document.body.classList.toggle("is-editing", isEditing);
    updateWidgets();
  });
  element("controls").addEventListener("click", () => {
    const panel = element("panel");
    panel.hidden = !panel.hidden;
    element("controls").setAttribute("aria-expanded", String(!panel.hidden));
    if (panel.hidden) return;
    showLedger();
    // On a phone it stands below all widgets.
    const isCalm = matchMedia("(prefers-reduced-motion: reduce)").matches;
    panel.focus({ preventScroll: true });
    panel.scrollIntoView({ behavior: isCalm ? "instant" : "smooth", block: "start" });
  });
  document.querySelectorAll("[data-close]").forEach((button) => button.addEventListener("click", () => button.closest("dialog").close()));
  element("theme").addEventListener("change", (event) => act("theme", { theme: Number(event.target.value) }));
  element("mode").addEventListener("change", (event) => act("mode", { mode: event.target.value }));
  element("user").addEventListener("change", (event) => act("user", { user: event.target.value }));
  element("environment").addEventListener("change", (event) => act("environment", { environment: event.target.value }));
  element("fault").addEventListener("change", (event) => act("fault", { fault: event.target.value }));
  element("kill").addEventListener("click", () => act("kill"));
  element("reload").addEventListener("click", () => act("reload"));
  element("day").addEventListener("click", () => showDay());
  element("news").addEventListener("submit", (event) => { event.preventDefault(); act("news", { address: element("news-address").value }); });
  element("asset-form").addEventListener("submit", (event) => {
    event.preventDefault();
    if (element("asset-choice").value) act("assets", { keys: [...state.app.assets.map((asset) => asset.key), element("asset-choice").value] });
  });
  document.querySelectorAll("[data-clock]").forEach((button) => button.addEventListener("click", () => {
    const wish = button.dataset.clock;
    act("clock", wish === "real" ? {} : { rate: wish === "stop" ? 0 : Number(wish) });
  }));
  element("travel").addEventListener("submit", (event) => {
    event.preventDefault();
    const time = element("travel-time").value;
    if (time) act("clock", { instant: `${time.length === 16 ? `${time}:00` : time}+05:30`, rate: 0 });
  });
}

async function start() {
  choices = await (await fetch("/choices")).json();
  element("user").replaceChildren(make("option", { value: "", textContent: "nobody" }), ...choices.users.map((user) =>
    make("option", { value: user.name, textContent: `${user.name} (${user.description})` })));
  if (!choices.users.length) element("user").closest("label").hidden = true;
  wire();
  const events = new EventSource("/events");
  events.addEventListener("state", (event) => update(event.data));
  events.addEventListener("error", () => { element("notice").textContent = "The home screen is not running."; });
  setInterval(updateAges, 1000);
}

start();
