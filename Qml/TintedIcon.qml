import Pictures 1.0

// A picture of one colour, shown in another. As large as the picture.
TintedPicture {}
