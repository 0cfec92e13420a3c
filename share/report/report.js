
"use strict";
(function () {
  const root = document.documentElement;
  root.classList.add("js");

  // Puts the text of a command into the clipboard.
  function addCopyButtons() {
    for (const code of document.querySelectorAll(".command > code")) {
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = "Copy";
      button.addEventListener("click", () => {
        getSelection().selectAllChildren(code);
        button.textContent = document.execCommand("copy") ? "Copied" : "Press Ctrl+C";
      });
      code.after(button);
    }
  }

  // The table of pairs: filters, sorting. Rows are laid out in bodies of a hundred, and only those that are seen. That
  // takes a display which takes their roles from the parts of a table in some browsers, so that all are told again.
  function startTable(table) {
    const rowsPerBody = 100;
    const form = document.getElementById("filters"), output = form.querySelector("output");
    const all = Array.from(table.tBodies, body => Array.from(body.rows)).flat().map((row, index) => {
      const cells = Array.from(row.cells), texts = cells.map(cell => cell.textContent);
      row.setAttribute("role", "row");
      for (const cell of cells) cell.setAttribute("role", cell.tagName === "TH" ? "rowheader" : "cell");
      return {row, index, texts, lower: texts.join(" ").toLowerCase(), name: texts[1].toLowerCase()};
    });
    let order = all, sorted = -1, isDown = false;

    function compare(column) {
      const valueOf = column > 2 ? item => parseFloat(item.texts[column] || (isDown ? -1 : Infinity))
        : column === 1 ? item => item.name : item => item.texts[column];
      return (left, right) => {
        const a = valueOf(left), b = valueOf(right);
        return (a < b ? -1 : a > b ? 1 : 0) * (isDown ? -1 : 1) || left.index - right.index;
      };
    }

    function show() {
      const words = form.elements.text.value.toLowerCase().split(/\s+/).filter(Boolean);
      const outcome = form.elements.outcome.value, format = form.elements.format.value;
      const shown = order.filter(item =>
        (!outcome || (outcome === "!" ? item.texts[0] !== "passed" : item.texts[0] === outcome)) &&
        (!format || item.texts[2] === format) && words.every(word => item.lower.includes(word)));
      const bodies = [];
      for (let begin = 0; begin < shown.length; begin += rowsPerBody) {
        const body = document.createElement("tbody");
        body.setAttribute("role", "rowgroup");
        body.append(...shown.slice(begin, begin + rowsPerBody).map(item => item.row));
        bodies.push(body);
      }
      for (const body of Array.from(table.tBodies)) body.remove();
      table.append(...bodies);
      output.textContent = shown.length === all.length ? "" :
        shown.length.toLocaleString("en") + " of " + all.length.toLocaleString("en");
    }

    function sortBy(column) {
      isDown = column === sorted ? !isDown : column === 4;
      sorted = column;
      order = all.slice().sort(compare(column));
      Array.from(table.tHead.rows[0].cells).forEach((head, index) => {
        if (index === column) head.setAttribute("aria-sort", isDown ? "descending" : "ascending");
        else head.removeAttribute("aria-sort");
      });
      show();
    }

    Array.from(table.tHead.rows[0].cells).forEach((head, column) => {
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = head.textContent;
      button.addEventListener("click", () => sortBy(column));
      head.replaceChildren(button);
      head.setAttribute("role", "columnheader");
    });
    table.setAttribute("role", "table");
    table.tHead.setAttribute("role", "rowgroup");
    table.tHead.rows[0].setAttribute("role", "row");
    form.hidden = false;
    form.addEventListener("input", show);
    form.addEventListener("submit", event => event.preventDefault());
    form.addEventListener("reset", () => setTimeout(show));
    for (const link of document.querySelectorAll("a[data-outcome], a[data-format], a[data-folder]"))
      link.addEventListener("click", () => {
        form.reset();
        form.elements.outcome.value = link.dataset.outcome || "";
        form.elements.format.value = link.dataset.format || "";
        form.elements.text.value = link.dataset.folder || "";
        show();
      });
    addEventListener("keydown", event => {
      if (event.key === "/" && isFree(event)) {
        event.preventDefault();
        form.elements.text.focus();
      }
    });
  }

  // Whether a key is meant for the page and not for a field or the browser.
  function isFree(event) {
    return !event.ctrlKey && !event.metaKey && !event.altKey &&
      !/^(INPUT|SELECT|TEXTAREA)$/.test(document.activeElement.tagName);
  }

  // The page of a pair: from difference to difference, from pair to pair.
  function startPair(bar) {
    const places = Array.from(document.querySelectorAll(".place"));
    let here = -1;
    function go(step) {
      if (!places.length) return;
      if (here >= 0) places[here].classList.remove("here");
      here = Math.min(Math.max(here + step, 0), places.length - 1);
      places[here].classList.add("here");
      places[here].focus({preventScroll: true});
      places[here].scrollIntoView({block: "start"});
    }
    function follow(relation) {
      const link = bar.querySelector("a[rel=" + relation + "]");
      if (link) location.href = link.href;
    }
    const deeds = {n: () => go(1), p: () => go(-1), j: () => follow("next"), k: () => follow("prev"), u: () => follow("up")};
    const help = document.createElement("span");
    help.className = "keys";
    for (const [key, words] of [["n", ""], ["p", "difference"], ["j", ""], ["k", "pair"], ["u", "all pairs"]]) {
      const element = document.createElement("kbd");
      element.textContent = key;
      help.append(element, words ? " " + words + "  " : " ");
    }
    bar.append(help);
    addEventListener("keydown", event => {
      if (isFree(event) && Object.hasOwn(deeds, event.key)) {
        event.preventDefault();
        deeds[event.key]();
      }
    });
  }

  document.addEventListener("DOMContentLoaded", () => {
    addCopyButtons();
    const table = document.getElementById("table"), bar = document.querySelector("nav.bar");
    if (table) startTable(table);
    if (bar) startPair(bar);
  });
})();
