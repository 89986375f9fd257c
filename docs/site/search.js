"use strict";
// Finds the entries that have all words of the query, best first: a word in a title counts more than
// one in the text, one at a word's beginning more than one within.
(() => {
  const query = (new URLSearchParams(location.search).get("q") || "").trim();
  const list = document.getElementById("results");
  const status = document.getElementById("status");
  for (const field of document.querySelectorAll("input[name=q]")) field.value = query;
  const words = query.toLowerCase().split(/\s+/).filter(Boolean);
  if (!words.length) { status.textContent = "Type what you look for."; return; }
  const worth = (text, word) => {
    const at = text.indexOf(word);
    if (at < 0) return 0;
    if (text === word) return 12;
    return at === 0 || /[\W_]/.test(text[at - 1]) ? 3 : 1;
  };
  const found = [];
  for (const [title, target, where, text] of SEARCH_INDEX) {
    let sum = 0;
    const all = words.every(word => {
      const value = 4 * worth(title.toLowerCase(), word) + worth(text.toLowerCase(), word);
      sum += value;
      return value > 0;
    });
    if (all) found.push([sum, title, target, where, text]);
  }
  found.sort((one, other) => other[0] - one[0] || one[1].length - other[1].length);
  status.textContent = found.length === 1 ? "One place" : `${found.length} places`;
  for (const [, title, target, where, text] of found.slice(0, 60)) {
    const item = document.createElement("li");
    const link = document.createElement("a");
    link.href = target;
    link.textContent = title;
    item.append(link, " ", Object.assign(document.createElement("span"),
      { className: "note", textContent: where }));
    const at = Math.max(0, text.toLowerCase().indexOf(words[0]) - 60);
    if (text) item.append(Object.assign(document.createElement("p"),
      { textContent: (at ? "…" : "") + text.slice(at, at + 180) + (at + 180 < text.length ? "…" : "") }));
    list.append(item);
  }
})();
