// Files of HDF5 (ODIM_H5, CfRadial as NetCDF-4): the tree of a file for the readers in C++.

import type * as Hdf5 from "h5wasm";

type Library = typeof Hdf5;

const signature = [0x89, 0x48, 0x44, 0x46, 0x0d, 0x0a, 0x1a, 0x0a];

export const isHdf5 = (bytes: Uint8Array): boolean => signature.every((byte, i) => bytes[i] === byte);

let library: Promise<Library> | null = null;

/** The library is unpacked when the first such file is met. */
async function load(packed: Uint8Array): Promise<Library> {
  const stream = new Blob([packed as BlobPart]).stream().pipeThrough(new DecompressionStream("gzip"));
  const script = await new Response(stream).blob();
  const url = URL.createObjectURL(new Blob([script], { type: "text/javascript" }));
  (self as unknown as { importScripts(url: string): void }).importScripts(url);
  URL.revokeObjectURL(url);
  const loaded = (self as unknown as { h5wasm: Library }).h5wasm;
  await loaded.ready;
  return loaded;
}

const enum Kind { none, group, data }
const enum Type { other, text, signed, unsigned, float }

interface Metadata { type: number; size: number; signed: boolean; shape: number[] | null }
const integerClass = 0, floatClass = 1, stringClass = 3;

function asNumbers(value: unknown): Float64Array {
  if (value === null || value === undefined) return new Float64Array(0);
  if (typeof value === "number" || typeof value === "bigint") return Float64Array.of(Number(value));
  return Float64Array.from(value as ArrayLike<number | bigint>, Number);
}

const trimmed = (text: string): string => text.split("\0", 1)[0]!.replace(/ +$/, "");

/** What the readers ask: every path begins at the file's root, without a slash. */
class Tree {
  constructor(private readonly file: Hdf5.File, private readonly h5: Library) {}

  kindOf(path: string): Kind {
    const slash = path.lastIndexOf("/");
    const parent = slash < 0 ? this.file : this.file.get(`/${path.slice(0, slash)}`);
    if (!(parent instanceof this.h5.Group) || !parent.keys().includes(path.slice(slash + 1))) return Kind.none;
    const found = this.file.get(`/${path}`);
    if (found instanceof this.h5.Group) return Kind.group;
    return found instanceof this.h5.Dataset ? Kind.data : Kind.none;
  }

  children(path: string): string[] {
    const found = this.file.get(`/${path}`);
    return found instanceof this.h5.Group ? found.keys() : [];
  }

  attribute(path: string, name: string): { isText: boolean; text: string; numbers: Float64Array } | null {
    const found = this.file.get(`/${path}`);
    if (!(found instanceof this.h5.Group || found instanceof this.h5.Dataset)) return null;
    const attribute = found.attrs[name];
    if (!attribute) return null;
    const metadata = attribute.metadata as Metadata;
    if (metadata.type === stringClass) {
      const value = attribute.value as string | string[] | null;
      const text = Array.isArray(value) ? (value.length === 1 ? value[0]! : "") : value ?? "";
      return { isText: true, text: trimmed(text), numbers: new Float64Array(0) };
    }
    const isNumber = metadata.type === integerClass || metadata.type === floatClass;
    return { isText: false, text: "", numbers: isNumber ? asNumbers(attribute.value) : new Float64Array(0) };
  }

  private data(path: string): Hdf5.Dataset { return this.file.get(`/${path}`) as Hdf5.Dataset; }

  describe(path: string): { type: Type; bytes: number; shape: number[]; dimensions: string[]; scale: string } {
    const data = this.data(path), metadata = data.metadata as unknown as Metadata;
    const shape = metadata.shape ?? [];
    const type = metadata.type === stringClass ? Type.text
      : metadata.type === floatClass ? Type.float
      : metadata.type === integerClass ? (metadata.signed ? Type.signed : Type.unsigned) : Type.other;
    return {
      type, bytes: metadata.size, shape, scale: data.get_scale_name() ?? "",
      dimensions: shape.map((_, i) => data.get_attached_scales(i)[0] ?? ""),
    };
  }

  numbers(path: string): Float64Array { return asNumbers(this.data(path).value); }

  /** Texts of a variable; characters along its last dimension make one. */
  texts(path: string): string[] {
    const data = this.data(path), metadata = data.metadata as unknown as Metadata;
    const value = data.value as string | string[] | null;
    const list = Array.isArray(value) ? value : value === null ? [] : [value];
    const shape = metadata.shape ?? [], length = shape[shape.length - 1] ?? 1;
    if (metadata.size !== 1) return list.map(trimmed);
    const texts: string[] = [];
    for (let at = 0; at < list.length; at += length) {
      texts.push(trimmed(list.slice(at, at + length).map((letter) => letter || "\0").join("")));
    }
    return texts;
  }
}

/** Opens a file for the readers, calls them and closes it. */
export async function withHdf5<T>(bytes: Uint8Array, packed: Uint8Array, read: () => T): Promise<T> {
  const h5 = await (library ??= load(packed));
  const { FS } = await h5.ready;
  const name = "input.h5";
  FS.writeFile(name, bytes);
  const file = new h5.File(name, "r");
  (self as unknown as { hdf5Tree: Tree | null }).hdf5Tree = new Tree(file, h5);
  try {
    return read();
  } finally {
    file.close();
    FS.unlink(name);
    (self as unknown as { hdf5Tree: Tree | null }).hdf5Tree = null;
  }
}
