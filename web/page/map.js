// The page: follows the stream of a link and shows its members on a map and in a list.
import * as L from "./leaflet.esm.min.js";

const kStaleAfter = 60; // seconds without news
const kShapes = {
  alive: "M9 1a8 8 0 1 0 .01 0z",
  fighting: "M9 0l2.2 5.6 5.9-1.4-2.9 5.3 4 4.6-6-.5L9 19l-2.2-5.4-6 .5 4-4.6L1.9 4.2l5.9 1.4z",
  dead: "M4 1l5 5 5-5 3 3-5 5 5 5-3 3-5-5-5 5-3-3 5-5-5-5z",
};

const element = (id) => document.getElementById(id);
const members = new Map(); // by id
let place = { facets: [], pictures: [], landmarks: [] };
let facet = 0;
let map = null;
let layers = null; // of the shown facet
let followed = null; // an id
let landmarkRows = [];
let pins = []; // of the shown facet's landmarks
let listTimer = null;
let wantedName = null; // from the address, until that member is there
let hasFitted = false; // the view to the members

// ---- the map

// Coordinates grow to the right and downwards. With a picture, the finest level has its pixels.
function crsOf(picture) {
  const unit = picture ? picture.unitsPerPixel * 2 ** picture.finest : 1;
  const left = picture ? picture.left : 0;
  const top = picture ? picture.top : 0;
  return L.extend({}, L.CRS.Simple, {
    transformation: new L.Transformation(1 / unit, -left / unit, -1 / unit, -top / unit),
  });
}

const at = (x, y) => L.latLng(-y, x);

function showFacet(number) {
  facet = number;
  element("facet").value = String(number);
  if (map) map.remove();
  for (const member of members.values()) member.marker = null;
  hasFitted = false;
  const picture = place.pictures.find((one) => one.facet === number);
  const finest = picture ? picture.finest : 0;
  map = L.map("map", {
    crs: crsOf(picture),
    minZoom: (picture ? picture.coarsest : 0) - 6,
    maxZoom: finest + 4,
    zoomSnap: 0.5,
    attributionControl: false,
    center: [0, 0],
    zoom: finest - 2,
  });
  if (picture) {
    const right = picture.left + picture.width * picture.unitsPerPixel;
    const bottom = picture.top + picture.height * picture.unitsPerPixel;
    const bounds = L.latLngBounds(at(picture.left, picture.top), at(right, bottom));
    L.tileLayer(`tiles/${number}/{z}/{x}/{y}`, {
      tileSize: picture.tileSide,
      minNativeZoom: picture.coarsest,
      maxNativeZoom: picture.finest,
      minZoom: picture.coarsest - 6,
      maxZoom: picture.finest + 4,
      bounds,
      noWrap: true,
    }).addTo(map);
    map.fitBounds(bounds, { animate: false });
  }
  layers = L.layerGroup().addTo(map);
  pins = place.landmarks.filter((landmark) => landmark.facet === number).map(addLandmark);
  map.on("dragstart", () => follow(null));
  map.on("moveend resize", placeLabels);
  for (const member of members.values()) drawMember(member);
  fitOnce();
  placeLabels();
}

function labelled(className, text) {
  const box = document.createElement("div");
  box.ariaHidden = "true"; // the list says it
  const label = document.createElement("span");
  label.className = "label";
  label.textContent = text;
  label.hidden = text === "";
  box.append(label);
  return { box, label, icon: L.divIcon({ className, html: box, iconSize: [24, 24] }) };
}

function addLandmark(landmark) {
  const { box, label, icon } = labelled("landmark", landmark.name);
  const pin = document.createElement("span");
  pin.className = "pin";
  pin.style.background = landmark.colour;
  box.prepend(pin);
  const marker = L.marker(at(landmark.x, landmark.y), { icon, keyboard: false }).addTo(layers);
  if (landmark.note) {
    const note = document.createElement("span");
    note.textContent = landmark.note;
    marker.bindTooltip(note);
  }
  return { marker, label };
}

// Puts the member's shape into a box, before its other children.
function showShape(box, member) {
  const state = kShapes[member.state] ? member.state : "alive";
  if (box.dataset.state === state) return;
  box.dataset.state = state;
  const svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
  svg.setAttribute("viewBox", "-1 -1 20 21");
  svg.setAttribute("class", `mark ${state}`);
  svg.setAttribute("aria-hidden", "true");
  path.setAttribute("d", kShapes[state]);
  svg.append(path);
  box.querySelector("svg")?.remove();
  box.prepend(svg);
}

function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

function nameOf(member) {
  return member.name ?? "";
}

function labelOf(member) {
  return [nameOf(member), member.hitPoints ?? ""].join(" ").trim();
}

function drawMember(member) {
  if (member.facet !== facet) {
    member.marker?.remove();
    member.marker = null;
    return;
  }
  if (!member.marker) {
    const { box, label, icon } = labelled("member", "");
    member.box = box;
    member.label = label;
    member.marker = L.marker(at(member.x, member.y), { icon, keyboard: false, zIndexOffset: 1000 });
    member.marker.on("click", () => follow(member.id));
    member.marker.addTo(layers);
  }
  member.marker.setLatLng(at(member.x, member.y));
  showShape(member.box, member);
  setText(member.label, labelOf(member));
  member.label.hidden = member.label.textContent === "";
  markMember(member);
  if (member.id === followed) map.panTo(at(member.x, member.y));
}

function markMember(member) {
  const classes = member.marker?.getElement()?.classList;
  classes?.toggle("followed", member.id === followed);
  classes?.toggle("stale", isStale(member));
}

function fitOnce() {
  const shown = [...members.values()].filter((member) => member.facet === facet);
  if (hasFitted || shown.length === 0 || followed !== null) return;
  hasFitted = true;
  map.fitBounds(L.latLngBounds(shown.map((one) => at(one.x, one.y))),
    { padding: [50, 30], maxZoom: map.getMaxZoom() - 4, animate: false });
}

// Labels stand right of their shapes, or else left. One that would cover another on both sides is
// hidden. The followed member's comes first, landmarks' last.
function placeLabels() {
  const width = map.getSize().x;
  const placed = [];
  const drawn = [...members.values()].sort((one, other) => (other.id === followed) - (one.id === followed))
    .concat(pins).filter((one) => one.marker && !one.label.hidden);
  // Before the first change, so that the page is laid out once.
  const sizes = drawn.map((one) => one.label.offsetWidth);
  drawn.forEach(({ marker, label }, i) => {
    const size = sizes[i];
    const { x, y } = map.latLngToContainerPoint(marker.getLatLng());
    const isFree = (from) => !placed.some(
      (one) => from < one.from + one.size && one.from < from + size && Math.abs(one.y - y) < 20);
    const [right, left] = [x + 11, x - 11 - size];
    const from = (right + size > width ? [left, right] : [right, left]).find(isFree);
    if (from !== undefined) placed.push({ from, size, y });
    label.classList.toggle("left", from === left);
    label.classList.toggle("covered", from === undefined);
  });
}

// ---- the list

const secondsSince = (member) => Math.max(0, Math.round((Date.now() - member.news) / 1000));
const isStale = (member) => secondsSince(member) >= kStaleAfter;

function ageText(member) {
  const seconds = secondsSince(member);
  if (seconds < 60) return `${seconds} s ago`;
  return seconds < 3600 ? `${Math.floor(seconds / 60)} min ago` : `${Math.floor(seconds / 3600)} h ago`;
}

function detailsOf(member) {
  const parts = [`${member.x}, ${member.y}`, `facet ${member.facet}`];
  if (member.state) parts.push(member.state);
  parts.push(ageText(member));
  return parts.join(" · ");
}

function rowOf(member) {
  if (!member.row) {
    member.row = document.createElement("li");
    const button = document.createElement("button");
    button.type = "button";
    button.append(...["shape", "name", "points"].map((name) => {
      const part = document.createElement("span");
      part.className = name;
      return part;
    }), document.createElement("small"));
    button.addEventListener("click", () => follow(member.id === followed ? null : member.id));
    member.row.append(button);
  }
  const button = member.row.firstChild;
  const [shape, name, points, details] = button.children;
  showShape(shape, member);
  setText(name, nameOf(member) || `Member ${member.id}`);
  setText(points, member.hitPoints === undefined ? "" : `${member.hitPoints} HP`);
  setText(details, detailsOf(member));
  button.setAttribute("aria-pressed", String(member.id === followed));
  return member.row;
}

function showList() {
  const wanted = element("search").value.toLocaleLowerCase();
  const shown = [...members.values()]
    .filter((member) => nameOf(member).toLocaleLowerCase().includes(wanted))
    .sort((one, other) => nameOf(one).localeCompare(nameOf(other)) || one.id - other.id);
  const rows = [...shown.map(rowOf), ...landmarkRows.filter((row) => row.dataset.name.includes(wanted))];
  const list = element("members");
  // Rows that stay in place keep the keyboard's focus.
  if (rows.length !== list.children.length || rows.some((row, i) => row !== list.children[i])) {
    const focused = document.activeElement;
    list.replaceChildren(...rows);
    if (list.contains(focused)) focused.focus();
  }
  setText(element("count"),
    shown.length === members.size ? `${members.size} members` : `${shown.length} of ${members.size} members`);
  for (const member of members.values()) markMember(member);
  placeLabels();
}

// At most twice a second, however much news there is.
function showListSoon() {
  listTimer ??= setTimeout(() => {
    listTimer = null;
    showList();
  }, 500);
}

function rowOfLandmark(landmark) {
  const row = document.createElement("li");
  row.dataset.name = landmark.name.toLocaleLowerCase();
  const button = document.createElement("button");
  button.type = "button";
  const parts = ["shape", "name", "points"].map(() => document.createElement("span"));
  const pin = document.createElement("span");
  pin.className = "pin";
  pin.style.background = landmark.colour;
  parts[0].append(pin);
  parts[1].className = "name";
  parts[1].textContent = landmark.name;
  const details = document.createElement("small");
  details.textContent =
    [`${landmark.x}, ${landmark.y}`, `facet ${landmark.facet}`, "landmark", landmark.note]
      .filter(Boolean).join(" · ");
  button.append(...parts, details);
  button.addEventListener("click", () => {
    location.hash = `${landmark.x},${landmark.y},${landmark.facet}`;
    readFragment();
  });
  row.append(button);
  return row;
}

function listFacets() {
  const facets = new Set(place.facets.length ? place.facets : [0, facet]);
  if (!place.facets.length) {
    for (const member of members.values()) facets.add(member.facet);
    for (const picture of place.pictures) facets.add(picture.facet);
  }
  const numbers = [...facets].sort((one, other) => one - other);
  const select = element("facet");
  const known = [...select.options].map((option) => Number(option.value));
  if (known.join() === numbers.join()) return;
  select.replaceChildren(...numbers.map((number) => new Option(String(number), String(number))));
  select.value = String(facet);
}

// ---- following, and the address's fragment: #member=NAME or #X,Y,FACET

function follow(id) {
  followed = id;
  wantedName = null;
  const member = members.get(id);
  if (member) {
    if (member.facet !== facet) showFacet(member.facet);
    map.panTo(at(member.x, member.y));
    if (nameOf(member)) history.replaceState(null, "", `#member=${encodeURIComponent(nameOf(member))}`);
  }
  showList();
}

function readFragment() {
  let text = location.hash.slice(1);
  try {
    text = decodeURIComponent(text);
  } catch {
    // As it stands.
  }
  if (text.startsWith("member=")) {
    wantedName = text.slice("member=".length);
    return followWanted();
  }
  const [x, y, number = facet] = text.split(",").map(Number);
  if (text === "" || [x, y, number].some((one) => !Number.isFinite(one))) return;
  follow(null);
  if (number !== facet) showFacet(number);
  hasFitted = true;
  map.setView(at(x, y), map.getMaxZoom() - 4);
}

function followWanted() {
  const member = [...members.values()].find((one) => wantedName !== null && nameOf(one) === wantedName);
  if (member) follow(member.id);
}

// ---- the stream

function takeMember(fields) {
  // Another start of corvane-web gives other ids.
  if (members.has(fields.id) && members.get(fields.id).name !== fields.name) removeMember(fields.id);
  const member = members.get(fields.id) ?? {};
  if (member.facet !== undefined && fields.facet !== member.facet && member.id === followed) {
    Object.assign(member, fields);
    showFacet(fields.facet);
  }
  Object.assign(member, fields, { news: Date.now() - fields.age * 1000 });
  members.set(fields.id, member);
  drawMember(member);
}

function removeMember(id) {
  const member = members.get(id);
  member?.marker?.remove();
  members.delete(id);
  if (id !== followed) return;
  followed = null;
  if (place.hasFullNames) wantedName = member.name; // for its return
}

function showBanner(text) {
  setText(element("banner"), text);
}

function take(news) {
  for (const id of news.left ?? []) removeMember(id);
  for (const fields of news.members) takeMember(fields);
  showBanner(news.online ? "" : "The server is not reached");
  listFacets();
  fitOnce();
  followWanted();
  showListSoon();
}

function connect() {
  const stream = new EventSource("events");
  stream.addEventListener("snapshot", (event) => {
    const news = JSON.parse(event.data);
    const there = new Set(news.members.map((member) => member.id));
    for (const id of [...members.keys()]) {
      if (!there.has(id)) removeMember(id);
    }
    take(news);
  });
  stream.addEventListener("change", (event) => take(JSON.parse(event.data)));
  stream.addEventListener("error", () => {
    showBanner("Connection lost. Trying again...");
    // The browser gives up after an answer such as 404 or 503; the link may be valid again later.
    if (stream.readyState === EventSource.CLOSED) setTimeout(connect, 5000);
  });
}

async function loadPlace() {
  try {
    const answer = await fetch("place.json");
    if (answer.ok) return await answer.json();
  } catch {
    // As after a wrong answer.
  }
  showBanner("Connection lost. Trying again...");
  await new Promise((resolve) => { setTimeout(resolve, 5000); });
  return loadPlace();
}

async function start() {
  place = await loadPlace();
  landmarkRows = place.landmarks.map(rowOfLandmark);
  showFacet(place.facets[0] ?? place.pictures[0]?.facet ?? 0);
  listFacets();
  element("facet").addEventListener("change", (event) => {
    follow(null);
    showFacet(Number(event.target.value));
  });
  element("search").addEventListener("input", showList);
  element("toggle").addEventListener("click", () => {
    const isOpen = element("panel").classList.toggle("open");
    element("toggle").setAttribute("aria-expanded", String(isOpen));
    map.invalidateSize();
  });
  addEventListener("hashchange", readFragment);
  readFragment();
  connect();
  setInterval(showList, 5000);
}

start();
