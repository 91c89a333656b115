// Removed once real tests land.
