// Makes elements of the page.

/**
 * @template {keyof HTMLElementTagNameMap} Tag
 * @param {Tag} tag @param {Record<string, string>} attributes @param {(Node | string)[]} children
 * @returns {HTMLElementTagNameMap[Tag]}
 */
export function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  made.append(...children);
  return made;
}

/** @param {string} tag @param {Record<string, string>} attributes @param {Node[]} children */
export function svg(tag, attributes = {}, ...children) {
  const made = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  made.append(...children);
  return made;
}

/** An element of index.html. @param {string} id @returns {any} */
export function byId(id) {
  const found = document.getElementById(id);
  if (!found) throw new Error(`the page has no element '${id}'`);
  return found;
}
