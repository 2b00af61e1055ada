import type { materialsEn } from "./materials.en.ts";

/** Materials, in Chinese. */
export const materialsZh: Record<keyof typeof materialsEn, string> = {
  noMaterials: "还没有素材",
  noMaterialsHint: "将图片和图标拖到这里，或点击选择。它们与页面一起保存，面板无需其他资源。",
  addMaterial: "添加图片",
  materialsHint: "PNG、JPEG、SVG、WebP 或 GIF，每个不超过 8 MB。可将文件拖到此界面任意位置。",
  replace: "替换",
  scaleDown: "缩小",
  scaleHint: "当前为 {0} × {1} 像素，{2}。请选择长边长度，所有使用处都会更新。",
  scaledTo: "已缩小为 {0} × {1} 像素，{2}。",
  notSmaller: "缩小后不会变小，保持不变。",
  isLarge: "较大：面板加载会变慢。",
  largeMaterial: "{0} 较大（{1}）。请缩小，以便面板快速加载。",
  notImage: "{0} 不是浏览器可显示的图片。",
  tooLarge: "{0} 超过 8 MB，未添加。请先缩小。",
  notReadable: "无法读取 {0}，请检查文件是否存在、是否有权打开。",
  deleteMaterial: "删除 {0}？",
  deleteMaterialUsed: "使用了 {0} 次，这些位置会列入问题。",
};
