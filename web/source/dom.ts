// Elements with attributes and children in one call.

type Value = string | number | boolean | null | EventListener;
export type Child = Node | string | null;

export function element<Name extends keyof HTMLElementTagNameMap>(
  name: Name, attributes: Record<string, Value> = {}, ...children: Child[]): HTMLElementTagNameMap[Name] {
  const made = document.createElement(name);
  apply(made, attributes, children);
  return made;
}

const svgNames = "http://www.w3.org/2000/svg";

export function drawing<Name extends keyof SVGElementTagNameMap>(
  name: Name, attributes: Record<string, Value> = {}, ...children: Child[]): SVGElementTagNameMap[Name] {
  const made = document.createElementNS(svgNames, name);
  apply(made, attributes, children);
  return made;
}

function apply(made: Element, attributes: Record<string, Value>, children: Child[]): void {
  for (const [key, value] of Object.entries(attributes)) {
    if (value === null || value === false) continue;
    if (typeof value === "function") made.addEventListener(key, value);
    else made.setAttribute(key, value === true ? "" : String(value));
  }
  made.append(...children.filter((child): child is Node | string => child !== null));
}

/** The element of the page with this name. */
export function byId<T extends Element = HTMLElement>(id: string): T {
  const found = document.getElementById(id);
  if (!found) throw new Error(`the page has no element ${id}`);
  return found as unknown as T;
}

export function download(name: string, data: BlobPart, type = "application/octet-stream"): void {
  const link = element("a", { href: URL.createObjectURL(new Blob([data], { type })), download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}
