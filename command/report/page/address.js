// What is chosen stands in the address, so that a link shows the same.
const kLists = ["series"];
const watchers = [];

function read() {
  const found = {};
  if (!location.hash.includes("=")) return found;
  for (const [name, value] of new URLSearchParams(location.hash.slice(1))) {
    if (kLists.includes(name)) (found[name] ??= []).push(value);
    else found[name] = value;
  }
  return found;
}

export const address = read();

export function remember(changes) {
  Object.assign(address, changes);
  const text = new URLSearchParams();
  for (const [name, value] of Object.entries(address)) {
    for (const one of [value].flat()) if (one !== undefined && one !== null && one !== "") text.append(name, one);
  }
  history.replaceState(null, "", `#${text}`);
}

// A link that is followed within the page.
export function onAddress(watcher) {
  watchers.push(watcher);
}

addEventListener("hashchange", () => {
  if (!location.hash.includes("=")) return;
  for (const name of Object.keys(address)) delete address[name];
  Object.assign(address, read());
  watchers.forEach(watcher => watcher());
});
